#pragma once

#include <QWidget>

class QStackedWidget;
class QTabBar;

// The inspectors' one panel: a row of items, one per job, above the page of
// the chosen one. Choosing an item leaves a breadcrumb. Main thread only.
class FLKSidePanel : public QWidget {
    Q_OBJECT

public:
    explicit FLKSidePanel(QWidget* parent = nullptr);

    // Adds an item and its page after the others; answers its index.
    int addPage(const QString& title, QWidget* page);
    int pageCount() const;
    // The index of the item of that title, or -1.
    int indexOfPage(const QString& title) const;
    QWidget* pageAt(int index) const;
    QWidget* currentPage() const;
    void setCurrentIndex(int index);
    QTabBar* itemBar() const { return items_; }

signals:
    void currentPageChanged(int index);

private:
    QTabBar* items_ = nullptr;
    QStackedWidget* pages_ = nullptr;
};

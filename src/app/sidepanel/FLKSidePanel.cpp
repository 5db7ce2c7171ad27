#include "app/sidepanel/FLKSidePanel.h"

#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

#include "app/shell/FLKBreadcrumbLog.h"

FLKSidePanel::FLKSidePanel(QWidget* parent) : QWidget(parent) {
    items_ = new QTabBar;
    items_->setObjectName("inspectorItems");
    items_->setDocumentMode(true);
    items_->setExpanding(false);
    items_->setUsesScrollButtons(true);
    items_->setDrawBase(true);
    pages_ = new QStackedWidget;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(items_);
    layout->addWidget(pages_, 1);
    connect(items_, &QTabBar::currentChanged, this, [this](int index) {
        if (index < 0) return;
        pages_->setCurrentIndex(index);
        FLKBreadcrumbLog::record(__func__, __LINE__,
                                 QStringLiteral("[INSPECTOR PANEL] -> (%1)").arg(items_->tabText(index)));
        emit currentPageChanged(index);
    });
}

int FLKSidePanel::addPage(const QString& title, QWidget* page) {
    // The stack first: adding the first item makes it current at once.
    pages_->addWidget(page);
    const int index = items_->addTab(title);
    // A bar still hidden does not tell the layout that it grew.
    items_->updateGeometry();
    return index;
}

int FLKSidePanel::pageCount() const { return pages_->count(); }

int FLKSidePanel::indexOfPage(const QString& title) const {
    for (int index = 0; index < items_->count(); ++index) {
        if (items_->tabText(index) == title) return index;
    }
    return -1;
}

QWidget* FLKSidePanel::pageAt(int index) const { return pages_->widget(index); }

QWidget* FLKSidePanel::currentPage() const { return pages_->currentWidget(); }

void FLKSidePanel::setCurrentIndex(int index) { items_->setCurrentIndex(index); }

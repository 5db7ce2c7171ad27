#pragma once

#include <QObject>
#include <QString>

class QAbstractItemView;
class QAction;

// The user's last steps before a crash, one line each, in "breadcrumbs.log"
// of the state folder: buttons pressed, menu items chosen, items picked in
// lists and grids, sprites loading, and whatever other parts record. Each
// line is flushed as it is written, so a crash loses none. Main thread only,
// but for record().
class FLKBreadcrumbLog : public QObject {
    Q_OBJECT

public:
    // Watches every button of the application from now on.
    static void startLogging();
    static QString logPath();

    // "<function> line <n> $ <text>". Any thread.
    static void record(const char* function, int line, const QString& text);
    // "[MENU] <menu> -> (<item>)" each time the item is chosen, from the menu
    // or by its shortcut.
    static void watchMenuItem(const QString& menuTitle, QAction* action);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using QObject::QObject;
    // "[COLLECTION VIEW] -> (<index paths>)" each time items become selected.
    static void watchSelection(QAbstractItemView* view);
};

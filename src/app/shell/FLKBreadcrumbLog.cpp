#include "app/shell/FLKBreadcrumbLog.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QMouseEvent>

#include <mutex>

#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"

namespace {
// A log that grew past this starts again, the previous one kept beside it.
constexpr qint64 kLogSizeLimit = 1 << 20;

QFile& logFile() {
    static QFile* file = [] {
        QDir().mkpath(QString::fromStdString(flk::stateHome().string()));
        const QString path = FLKBreadcrumbLog::logPath();
        if (QFileInfo(path).size() > kLogSizeLimit) {
            QFile::remove(path + ".1");
            QFile::rename(path, path + ".1");
        }
        auto* opened = new QFile(path);
        if (!opened->open(QIODevice::Append | QIODevice::Text)) qWarning("No breadcrumb log at %s", qPrintable(path));
        return opened;
    }();
    return *file;
}

// Sprites may be loaded off the main thread.
std::mutex& logMutex() {
    static std::mutex* mutex = new std::mutex;
    return *mutex;
}

// As index paths: "section - item", the one section of a list or grid being 0.
QString indexPaths(const QModelIndexList& indexes) {
    QStringList paths;
    for (const QModelIndex& index : indexes) {
        if (index.column() == 0) paths << QStringLiteral("%1 - %2").arg(index.parent().isValid() ? index.parent().row() : 0).arg(index.row());
    }
    return paths.join(QStringLiteral(", "));
}
}  // namespace

QString FLKBreadcrumbLog::logPath() {
    return QString::fromStdString((flk::stateHome() / "breadcrumbs.log").string());
}

void FLKBreadcrumbLog::startLogging() {
    static FLKBreadcrumbLog* filter = nullptr;
    if (filter || !qApp) return;
    filter = new FLKBreadcrumbLog(qApp);
    qApp->installEventFilter(filter);
    logFile();
    flk::setBreadcrumbSink([](const char* function, int line, const std::string& text) {
        record(function, line, QString::fromStdString(text));
    });
}

void FLKBreadcrumbLog::record(const char* function, int line, const QString& text) {
    std::lock_guard lock(logMutex());
    QFile& file = logFile();
    if (!file.isOpen()) return;
    file.write(QStringLiteral("%1 line %2 $ %3\n").arg(QString::fromLatin1(function)).arg(line).arg(text).toUtf8());
    file.flush();
}

void FLKBreadcrumbLog::watchMenuItem(const QString& menuTitle, QAction* action) {
    QObject::connect(action, &QAction::triggered, action, [menuTitle, action] {
        QString title = menuTitle;
        title.remove('&');
        record("watchMenuItem", __LINE__, QStringLiteral("[MENU] %1 -> (%2)").arg(title, action->text().remove('&')));
    });
}

void FLKBreadcrumbLog::watchSelection(QAbstractItemView* view) {
    QItemSelectionModel* selection = view->selectionModel();
    // Once per selection model; a view given a new model gets a new one.
    if (!selection || selection->property("flkBreadcrumbs").toBool()) return;
    selection->setProperty("flkBreadcrumbs", true);
    QObject::connect(selection, &QItemSelectionModel::selectionChanged, selection,
                     [](const QItemSelection& selected, const QItemSelection&) {
                         record("watchSelection", __LINE__,
                                QStringLiteral("[COLLECTION VIEW] -> (%1)").arg(indexPaths(selected.indexes())));
                     });
}

bool FLKBreadcrumbLog::eventFilter(QObject* watched, QEvent* event) {
    // Lists and grids the user picks from, not the pop-up lists of combo boxes.
    if (event->type() == QEvent::Show) {
        auto* view = qobject_cast<QAbstractItemView*>(watched);
        if (view && view->window()->windowType() != Qt::Popup) watchSelection(view);
    }
    // A click is a release inside the button that pressed it; keys go through the same signal.
    if (event->type() == QEvent::MouseButtonRelease) {
        auto* button = qobject_cast<QAbstractButton*>(watched);
        auto* mouse = static_cast<QMouseEvent*>(event);
        if (button && button->isEnabled() && button->isDown() && button->rect().contains(mouse->position().toPoint())) {
            const QObject* target = button->window();
            record(__func__, __LINE__,
                   QStringLiteral("[BUTTON] %1 -> (%2 -%3)")
                       .arg(button->text(), QString::fromLatin1(target->metaObject()->className()),
                            button->objectName().isEmpty() ? QStringLiteral("clicked") : button->objectName()));
        }
    }
    return QObject::eventFilter(watched, event);
}

#include "app/shell/FLKBreadcrumbLog.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMouseEvent>

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
}

void FLKBreadcrumbLog::record(const char* function, int line, const QString& text) {
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

bool FLKBreadcrumbLog::eventFilter(QObject* watched, QEvent* event) {
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

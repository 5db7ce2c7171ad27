#include "app/shell/FLKCanvasDropTarget.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include "app/shell/FLKFileHandler.h"

namespace {
QStringList localFiles(const QMimeData* data) {
    QStringList files;
    if (!data || !data->hasUrls()) return files;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile()) files << url.toLocalFile();
    }
    return files;
}
}  // namespace

FLKCanvasDropTarget::FLKCanvasDropTarget(QWidget* canvas, FLKFileHandler& files) : QObject(canvas), files_(files) {
    canvas->setAcceptDrops(true);
    canvas->installEventFilter(this);
}

bool FLKCanvasDropTarget::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::DragEnter:
        case QEvent::DragMove: {
            auto* drag = static_cast<QDropEvent*>(event);
            if (localFiles(drag->mimeData()).isEmpty()) return false;
            drag->setDropAction(Qt::CopyAction);
            drag->accept();
            return true;
        }
        case QEvent::Drop: {
            auto* drop = static_cast<QDropEvent*>(event);
            const QStringList files = localFiles(drop->mimeData());
            if (files.isEmpty()) return false;
            drop->setDropAction(Qt::CopyAction);
            drop->accept();
            // After the drop has finished: opening a document may ask the user.
            QMetaObject::invokeMethod(
                this, [this, files] { for (const auto& file : files) files_.handleOpenURL(file.toStdString()); },
                Qt::QueuedConnection);
            return true;
        }
        default: return QObject::eventFilter(watched, event);
    }
}

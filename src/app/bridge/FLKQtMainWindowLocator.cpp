#include "app/bridge/FLKQtMainWindowLocator.h"

#include <QEvent>
#include <QWidget>

FLKQtMainWindowLocator::FLKQtMainWindowLocator(QWidget* window) : window_(window) {
    window_->installEventFilter(this);
    record();
}

std::optional<FLKRect> FLKQtMainWindowLocator::mainWindowFrame() const {
    std::lock_guard lock(mutex_);
    return frame_;
}

bool FLKQtMainWindowLocator::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::WindowStateChange:
            if (watched == window_) record();
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void FLKQtMainWindowLocator::record() {
    std::optional<FLKRect> frame;
    if (window_->isVisible() && !window_->isMinimized()) {
        const QRect geometry = window_->frameGeometry();
        frame = FLKRect{{static_cast<double>(geometry.x()), static_cast<double>(geometry.y())},
                        {static_cast<double>(geometry.width()), static_cast<double>(geometry.height())}};
    }
    std::lock_guard lock(mutex_);
    frame_ = frame;
}

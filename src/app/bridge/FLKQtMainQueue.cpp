#include "app/bridge/FLKQtMainQueue.h"

#include <QThread>
#include <QTimer>

#include <cmath>

namespace {
QElapsedTimer startedTimer() {
    QElapsedTimer timer;
    timer.start();
    return timer;
}
}  // namespace

FLKQtMainQueue::FLKQtMainQueue(QObject* context) : context_(context), clock_(startedTimer()) {}

void FLKQtMainQueue::post(Task task) {
    QMetaObject::invokeMethod(context_, std::move(task), Qt::QueuedConnection);
}

void FLKQtMainQueue::postAfter(double seconds, Task task) {
    const int msec = static_cast<int>(std::ceil(std::max(0.0, seconds) * 1000));
    // A timer belongs to the thread that starts it: start it on the main one.
    post([context = context_, msec, task = std::move(task)]() mutable {
        QTimer::singleShot(msec, Qt::PreciseTimer, context, std::move(task));
    });
}

double FLKQtMainQueue::now() const { return static_cast<double>(clock_.nsecsElapsed()) / 1e9; }

bool FLKQtMainQueue::isMainThread() const { return QThread::currentThread() == context_->thread(); }

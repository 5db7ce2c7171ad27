#pragma once

#include <QElapsedTimer>
#include <QObject>

#include "core/platform/FLKMainQueue.h"

// The main queue on Qt's event loop: tasks and timers run on the thread of
// the object given (the application's), whichever thread posts them.
class FLKQtMainQueue : public FLKMainQueue {
public:
    explicit FLKQtMainQueue(QObject* context);

    void post(Task task) override;
    void postAfter(double seconds, Task task) override;
    double now() const override;
    bool isMainThread() const override;

private:
    QObject* const context_;     // lives on the main thread, outlives the queue's use
    const QElapsedTimer clock_;  // started at construction; read-only afterwards
};

#pragma once

#include <cstddef>
#include <mutex>
#include <thread>

#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKScheduledTasks.h"

// A main queue for tests: nothing runs until the test says so, and time is
// virtual, starting at 0. The creating thread is the main thread. Tasks may
// be posted from any thread.
class FLKManualMainQueue : public FLKMainQueue {
public:
    FLKManualMainQueue();

    void post(Task task) override;
    void postAfter(double seconds, Task task) override;
    double now() const override;
    bool isMainThread() const override;

    // Runs the tasks ready at the current virtual time, including those they
    // post; returns how many ran.
    size_t runPending();
    // Whether a task is ready at the current virtual time (tests wait for
    // another thread's post with it).
    bool hasPending() const;
    // Moves virtual time forward, running every task on the way in due order
    // with the clock set to each task's due time; returns how many ran.
    size_t advanceBy(double seconds);

private:
    const std::thread::id mainThread_;
    mutable std::mutex mutex_;
    double now_ = 0;            // guarded by mutex_
    FLKScheduledTasks tasks_;   // guarded by mutex_
};

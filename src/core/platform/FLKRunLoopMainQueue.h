#pragma once

#include <atomic>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <thread>

#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKScheduledTasks.h"

// A main queue run by a blocking loop on one thread (the command line tool's
// main thread). The thread that creates it is the main thread until a run
// starts on another one.
class FLKRunLoopMainQueue : public FLKMainQueue {
public:
    FLKRunLoopMainQueue();

    void post(Task task) override;
    void postAfter(double seconds, Task task) override;
    double now() const override;  // steady seconds
    bool isMainThread() const override;

    // Runs tasks on the calling thread until stop().
    void run();
    // Runs until `done` answers true (asked before each wait and after each
    // task), stop() or `timeout` seconds; returns the last answer of `done`.
    bool runUntil(const std::function<bool()>& done,
                  double timeout = std::numeric_limits<double>::infinity());
    // Runs until this queue's clock reaches `deadline` or stop().
    void runUntilDate(double deadline);
    // Ends the run in progress after its current task, or the next run at
    // once when none is in progress. Any thread.
    void stop();

private:
    void runLoop(double deadline, const std::function<bool()>& done);

    std::atomic<std::thread::id> mainThread_;  // written by the thread starting a run
    std::mutex mutex_;
    std::condition_variable wake_;             // signalled on post and stop
    FLKScheduledTasks tasks_;                  // guarded by mutex_
    bool stopRequested_ = false;               // guarded by mutex_
};

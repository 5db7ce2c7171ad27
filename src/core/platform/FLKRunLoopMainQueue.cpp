#include "core/platform/FLKRunLoopMainQueue.h"

#include <algorithm>
#include <chrono>

namespace {
using Clock = std::chrono::steady_clock;

double steadySeconds() { return std::chrono::duration<double>(Clock::now().time_since_epoch()).count(); }

Clock::time_point timePoint(double seconds) {
    return Clock::time_point(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)));
}
}  // namespace

FLKRunLoopMainQueue::FLKRunLoopMainQueue() : mainThread_(std::this_thread::get_id()) {}

void FLKRunLoopMainQueue::post(Task task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.post(std::move(task));
    }
    wake_.notify_all();
}

void FLKRunLoopMainQueue::postAfter(double seconds, Task task) {
    double due = now() + seconds;
    {
        std::lock_guard lock(mutex_);
        tasks_.postAt(due, std::move(task));
    }
    wake_.notify_all();
}

double FLKRunLoopMainQueue::now() const { return steadySeconds(); }

bool FLKRunLoopMainQueue::isMainThread() const { return mainThread_.load() == std::this_thread::get_id(); }

void FLKRunLoopMainQueue::run() { runLoop(std::numeric_limits<double>::infinity(), {}); }

bool FLKRunLoopMainQueue::runUntil(const std::function<bool()>& done, double timeout) {
    runLoop(now() + timeout, done);
    return done();
}

void FLKRunLoopMainQueue::runUntilDate(double deadline) { runLoop(deadline, {}); }

void FLKRunLoopMainQueue::stop() {
    {
        std::lock_guard lock(mutex_);
        stopRequested_ = true;
    }
    wake_.notify_all();
}

void FLKRunLoopMainQueue::runLoop(double deadline, const std::function<bool()>& done) {
    mainThread_.store(std::this_thread::get_id());
    while (!(done && done())) {
        std::unique_lock lock(mutex_);
        if (stopRequested_) {
            stopRequested_ = false;
            return;
        }
        double current = now();
        if (auto task = tasks_.takeNext(current)) {
            lock.unlock();
            (*task)();
            continue;
        }
        if (current >= deadline) return;
        double wakeAt = std::min(deadline, tasks_.nextDue().value_or(deadline));
        if (wakeAt == std::numeric_limits<double>::infinity()) {
            wake_.wait(lock);
        } else {
            wake_.wait_until(lock, timePoint(wakeAt));
        }
    }
}

#include "core/platform/FLKManualMainQueue.h"

#include <algorithm>

FLKManualMainQueue::FLKManualMainQueue() : mainThread_(std::this_thread::get_id()) {}

void FLKManualMainQueue::post(Task task) {
    std::lock_guard lock(mutex_);
    tasks_.post(std::move(task));
}

void FLKManualMainQueue::postAfter(double seconds, Task task) {
    std::lock_guard lock(mutex_);
    tasks_.postAt(now_ + std::max(seconds, 0.0), std::move(task));
}

double FLKManualMainQueue::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

bool FLKManualMainQueue::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

size_t FLKManualMainQueue::runPending() {
    size_t count = 0;
    while (true) {
        std::optional<Task> task;
        {
            std::lock_guard lock(mutex_);
            task = tasks_.takeNext(now_);
        }
        if (!task) return count;
        (*task)();
        ++count;
    }
}

bool FLKManualMainQueue::hasPending() const {
    std::lock_guard lock(mutex_);
    if (tasks_.hasReady()) return true;
    auto due = tasks_.nextDue();
    return due && *due <= now_;
}

size_t FLKManualMainQueue::advanceBy(double seconds) {
    double target = now() + std::max(seconds, 0.0);
    size_t count = runPending();
    while (true) {
        {
            std::lock_guard lock(mutex_);
            auto due = tasks_.nextDue();
            if (!due || *due > target) {
                now_ = target;
                break;
            }
            now_ = std::max(now_, *due);
        }
        count += runPending();
    }
    return count + runPending();
}

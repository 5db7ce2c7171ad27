#include "core/platform/FLKScheduledTasks.h"

std::optional<FLKScheduledTasks::Task> FLKScheduledTasks::takeNext(double now) {
    while (!delayed_.empty() && delayed_.begin()->first.first <= now) {
        ready_.push_back(std::move(delayed_.begin()->second));
        delayed_.erase(delayed_.begin());
    }
    if (ready_.empty()) return std::nullopt;
    Task task = std::move(ready_.front());
    ready_.pop_front();
    return task;
}

std::optional<double> FLKScheduledTasks::nextDue() const {
    if (delayed_.empty()) return std::nullopt;
    return delayed_.begin()->first.first;
}

#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <utility>

// The task lists behind a main queue: tasks ready now in submission order,
// and delayed tasks by due time (equal times in submission order). Not
// thread-safe; the owning queue locks around it.
class FLKScheduledTasks {
public:
    using Task = std::function<void()>;

    void post(Task task) { ready_.push_back(std::move(task)); }
    void postAt(double due, Task task) { delayed_.emplace(std::make_pair(due, nextSequence_++), std::move(task)); }

    // Moves delayed tasks due by `now` behind the ready ones, then takes the first.
    std::optional<Task> takeNext(double now);
    std::optional<double> nextDue() const;
    bool hasReady() const { return !ready_.empty(); }

private:
    std::deque<Task> ready_;
    std::map<std::pair<double, uint64_t>, Task> delayed_;
    uint64_t nextSequence_ = 0;
};

#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

// Counts events that may let a waiting stage go on (a frame decoded, a read
// ended, a cancel), so that stage blocks until one happens instead of asking
// again at intervals. Read the count, check, then wait past the count read:
// an event between the check and the wait is not lost. Any thread.
class FLKProgressSignal {
public:
    std::uint64_t count() const {
        std::lock_guard lock(mutex_);
        return count_;
    }
    void notify() {
        {
            std::lock_guard lock(mutex_);
            ++count_;
        }
        changed_.notify_all();
    }
    // Blocks until an event came after `seen` was read.
    void waitPast(std::uint64_t seen) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return count_ != seen; });
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::uint64_t count_ = 0;  // guarded by mutex_
};

#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

class FLKMainQueue;

// A one-shot or repeating timer on a main queue. The block runs on the main
// queue's thread. A timer fires until invalidated (repeating) or once. A
// repeating timer keeps its cadence: the n-th firing is due n intervals after
// scheduling, not an interval after the last one ran; firings missed while
// the queue was busy are skipped.
class FLKTimer : public std::enable_shared_from_this<FLKTimer> {
public:
    using Block = std::function<void(FLKTimer&)>;

    // Scheduled on FLKMainQueue::main() unless a queue is given.
    static std::shared_ptr<FLKTimer> scheduledTimer(double interval, bool repeats, Block block,
                                                    std::shared_ptr<FLKMainQueue> queue = nullptr);

    void invalidate();
    bool isValid() const;
    double interval() const { return interval_; }
    bool repeats() const { return repeats_; }

    FLKTimer(double interval, bool repeats, Block block, std::shared_ptr<FLKMainQueue> queue);

private:
    void schedule();
    void scheduleNext();
    void fire();

    double interval_;                       // immutable
    bool repeats_;                          // immutable
    Block block_;                           // main thread only
    std::shared_ptr<FLKMainQueue> queue_;   // immutable
    std::atomic<bool> valid_ = true;        // any thread
    double start_ = 0;                      // main thread only, after schedule()
    uint64_t firings_ = 0;                  // main thread only
};

#pragma once

#include <functional>
#include <memory>

class FLKMainQueue;

// A one-shot or repeating timer on a main queue. The block runs on the main
// queue's thread. A timer fires until invalidated (repeating) or once.
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
    void fire();

    double interval_;
    bool repeats_;
    Block block_;
    std::shared_ptr<FLKMainQueue> queue_;
    bool valid_ = true;  // main thread only
};

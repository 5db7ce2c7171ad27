#pragma once

#include <functional>
#include <memory>
#include <string>

// A serial queue: one worker thread runs blocks one at a time in the order
// they were submitted. Destroying the queue finishes the blocks already
// submitted, then joins the worker.
class FLKDispatchQueue {
public:
    using Block = std::function<void()>;

    explicit FLKDispatchQueue(std::string label);
    ~FLKDispatchQueue();
    FLKDispatchQueue(const FLKDispatchQueue&) = delete;
    FLKDispatchQueue& operator=(const FLKDispatchQueue&) = delete;

    static std::shared_ptr<FLKDispatchQueue> make(std::string label) {
        return std::make_shared<FLKDispatchQueue>(std::move(label));
    }

    const std::string& label() const;
    void async(Block block);
    // Runs the block on the queue and waits for it. Calling it from the
    // queue's own thread runs the block at once instead of deadlocking.
    void sync(const Block& block);
    bool isCurrent() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

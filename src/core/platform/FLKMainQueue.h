#pragma once

#include <functional>
#include <memory>

// The main queue: where models change, notifications of export arrive and
// timers fire. Implementations: a real run loop (CLI), a manual run loop with
// virtual time (tests), and the app's toolkit loop.
class FLKMainQueue {
public:
    using Task = std::function<void()>;
    virtual ~FLKMainQueue() = default;

    // Runs the task later on the main thread, in submission order.
    virtual void post(Task task) = 0;
    // Runs the task once `seconds` have passed on this queue's clock.
    virtual void postAfter(double seconds, Task task) = 0;
    // Seconds on this queue's clock (virtual time for the manual loop).
    virtual double now() const = 0;
    // True on the thread that runs the queue's tasks.
    virtual bool isMainThread() const = 0;

    // The process-wide main queue. Until one is installed, a real run loop
    // owned by the calling thread of the first use is created.
    static std::shared_ptr<FLKMainQueue> main();
    static void setMain(std::shared_ptr<FLKMainQueue> queue);
};

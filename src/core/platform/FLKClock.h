#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "core/platform/FLKUpdatableTimer.h"

class FLKDispatchQueue;
class FLKRefreshSource;
class FLKTimeUpdatable;

// The display clock: on every refresh of the main display, each registered
// updatable receives the seconds since its own start moment, on the clock's
// serial queue. Updatables are held weakly; one that goes away drops out.
class FLKClock : public FLKUpdatableTimer, public std::enable_shared_from_this<FLKClock> {
public:
    // Seconds on a steady scale; called from any thread.
    using TimeSource = std::function<double()>;

    static std::shared_ptr<FLKClock> clock();
    // A clock of its own; `timeSource` replaces the steady clock (tests drive
    // virtual time through it).
    static std::shared_ptr<FLKClock> make(TimeSource timeSource = {});
    ~FLKClock() override;
    FLKClock(const FLKClock&) = delete;
    FLKClock& operator=(const FLKClock&) = delete;

    // Replaces the headless ticker; only before start().
    void setRefreshSource(std::shared_ptr<FLKRefreshSource> source);
    // Ties the clock to the refresh source; once.
    void start();
    // The refresh callback's entry: hands a tick to the clock queue.
    void update();
    // Runs one tick at once on the calling thread (normally the clock queue).
    void tick();

    void addUpdatable(std::shared_ptr<FLKTimeUpdatable> updatable) override;
    void removeUpdateable(const std::shared_ptr<FLKTimeUpdatable>& updatable) override;
    void removeAllUpdatables() override;
    // On the main thread the block runs at once; elsewhere it goes to the clock queue.
    void dispatchOnCorrectQueue(std::function<void()> block);
    unsigned fps() const override { return fps_; }
    const std::shared_ptr<FLKDispatchQueue>& clockQueue() const { return clockQueue_; }

private:
    struct Registration {
        std::weak_ptr<FLKTimeUpdatable> updatable;
        double start;  // seconds on the time source
    };

    explicit FLKClock(TimeSource timeSource);
    void registerUpdatable(const std::shared_ptr<FLKTimeUpdatable>& updatable);
    void unregisterUpdatable(const std::weak_ptr<FLKTimeUpdatable>& updatable);

    const TimeSource timeSource_;
    std::atomic<unsigned> fps_ = 0;
    std::atomic<bool> tickQueued_ = false;   // set by the refresh thread, cleared on the clock queue
    mutable std::mutex mutex_;
    std::vector<Registration> updatableTimes_;             // guarded by mutex_, in order of registration
    std::shared_ptr<FLKRefreshSource> refreshSource_;      // guarded by mutex_
    bool started_ = false;                                 // guarded by mutex_
    // Last member: destroyed first, so blocks still queued find the rest intact.
    const std::shared_ptr<FLKDispatchQueue> clockQueue_;
};

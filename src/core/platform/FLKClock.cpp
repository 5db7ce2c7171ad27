#include "core/platform/FLKClock.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKSteadyRefreshSource.h"
#include "core/platform/FLKTimeUpdatable.h"

namespace {
double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool sameOwner(const std::weak_ptr<FLKTimeUpdatable>& a, const std::weak_ptr<FLKTimeUpdatable>& b) {
    return !a.owner_before(b) && !b.owner_before(a);
}
}  // namespace

std::shared_ptr<FLKClock> FLKClock::clock() {
    static const std::shared_ptr<FLKClock> shared = make();
    return shared;
}

std::shared_ptr<FLKClock> FLKClock::make(TimeSource timeSource) {
    return std::shared_ptr<FLKClock>(new FLKClock(timeSource ? std::move(timeSource) : steadySeconds));
}

FLKClock::FLKClock(TimeSource timeSource)
    : timeSource_(std::move(timeSource)),
      clockQueue_(FLKDispatchQueue::make("org.flickwell.Flickwell.FLKClock.queue")) {}

FLKClock::~FLKClock() {
    std::shared_ptr<FLKRefreshSource> source;
    {
        std::lock_guard lock(mutex_);
        source = std::move(refreshSource_);
    }
    if (source) source->stop();
}

void FLKClock::setRefreshSource(std::shared_ptr<FLKRefreshSource> source) {
    std::lock_guard lock(mutex_);
    if (!started_) refreshSource_ = std::move(source);
}

void FLKClock::start() {
    std::shared_ptr<FLKRefreshSource> source;
    {
        std::lock_guard lock(mutex_);
        if (started_) return;
        started_ = true;
        if (!refreshSource_) refreshSource_ = std::make_shared<FLKSteadyRefreshSource>();
        source = refreshSource_;
    }
    if (int error = source->open()) {
        flk::log("DisplayLink created with error:%d", error);
        std::lock_guard lock(mutex_);
        refreshSource_.reset();
        return;
    }
    auto period = source->nominalRefreshPeriod();
    if (period.timeValue > 0) {
        fps_ = static_cast<unsigned>(std::ceil(static_cast<float>(period.timeScale) / static_cast<float>(period.timeValue)));
    }
    source->start([weak = weak_from_this()] {
        if (auto clock = weak.lock()) clock->update();
    });
}

void FLKClock::update() {
    // A tick still waiting covers this refresh too: a slow tick must not pile up a backlog.
    if (tickQueued_.exchange(true)) return;
    clockQueue_->async([weak = weak_from_this()] {
        if (auto clock = weak.lock()) {
            clock->tickQueued_ = false;
            clock->tick();
        }
    });
}

void FLKClock::tick() {
    double now = timeSource_();
    std::vector<std::pair<std::shared_ptr<FLKTimeUpdatable>, double>> snapshot;
    {
        std::lock_guard lock(mutex_);
        std::erase_if(updatableTimes_, [](const Registration& r) { return r.updatable.expired(); });
        for (const auto& registration : updatableTimes_) {
            if (auto updatable = registration.updatable.lock()) snapshot.emplace_back(updatable, registration.start);
        }
    }
    for (const auto& [updatable, start] : snapshot) updatable->update(now - start);
}

void FLKClock::addUpdatable(std::shared_ptr<FLKTimeUpdatable> updatable) {
    if (!updatable) return;
    dispatchOnCorrectQueue([weak = weak_from_this(), updatable] {
        if (auto clock = weak.lock()) clock->registerUpdatable(updatable);
    });
}

void FLKClock::removeUpdateable(const std::shared_ptr<FLKTimeUpdatable>& updatable) {
    if (!updatable) return;
    dispatchOnCorrectQueue([weak = weak_from_this(), target = std::weak_ptr(updatable)] {
        if (auto clock = weak.lock()) clock->unregisterUpdatable(target);
    });
}

void FLKClock::removeAllUpdatables() {
    dispatchOnCorrectQueue([weak = weak_from_this()] {
        if (auto clock = weak.lock()) {
            std::lock_guard lock(clock->mutex_);
            clock->updatableTimes_.clear();
        }
    });
}

void FLKClock::dispatchOnCorrectQueue(std::function<void()> block) {
    if (FLKMainQueue::main()->isMainThread()) {
        block();
    } else {
        clockQueue_->async(std::move(block));
    }
}

void FLKClock::registerUpdatable(const std::shared_ptr<FLKTimeUpdatable>& updatable) {
    // Back-dating the start moment makes the elapsed time continue from where the updatable stands.
    double start = timeSource_() - updatable->currentTime();
    std::weak_ptr<FLKTimeUpdatable> key = updatable;
    std::lock_guard lock(mutex_);
    auto existing = std::find_if(updatableTimes_.begin(), updatableTimes_.end(),
                                 [&](const Registration& r) { return sameOwner(r.updatable, key); });
    if (existing != updatableTimes_.end()) {
        existing->start = start;
    } else {
        updatableTimes_.push_back({key, start});
    }
}

void FLKClock::unregisterUpdatable(const std::weak_ptr<FLKTimeUpdatable>& updatable) {
    std::lock_guard lock(mutex_);
    std::erase_if(updatableTimes_, [&](const Registration& r) { return sameOwner(r.updatable, updatable); });
}

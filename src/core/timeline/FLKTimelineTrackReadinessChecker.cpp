#include "core/timeline/FLKTimelineTrackReadinessChecker.h"

#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKTimer.h"

void FLKTimelineTrackReadinessChecker::setDelegate(std::weak_ptr<FLKTimelineTrackReadinessCheckerDelegate> delegate) {
    std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

std::vector<std::shared_ptr<FLKTimelineTrack>> FLKTimelineTrackReadinessChecker::currentTracks() const {
    std::lock_guard lock(mutex_);
    return currentTracks_;
}

bool FLKTimelineTrackReadinessChecker::isPolling() const {
    std::lock_guard lock(mutex_);
    return pollingTimer_ != nullptr;
}

bool FLKTimelineTrackReadinessChecker::allReady(const std::vector<std::shared_ptr<FLKTimelineTrack>>& tracks) {
    for (const auto& track : tracks) {
        if (!track->isReady()) return false;
    }
    return true;
}

bool FLKTimelineTrackReadinessChecker::checkReadinessForTracks(
    const std::vector<std::shared_ptr<FLKTimelineTrack>>& tracks) {
    uint64_t generation;
    {
        std::lock_guard lock(mutex_);
        currentTracks_ = tracks;
        generation = generation_;
    }
    if (allReady(tracks)) return true;
    {
        // A pause since the tracks were taken leaves nothing to wait for; a
        // late "not ready" would read as waiting to play.
        std::lock_guard lock(mutex_);
        if (generation != generation_) return false;
        status_.store(kNotReady);
    }
    tellDelegate(kNotReady);
    std::weak_ptr<FLKTimelineTrackReadinessChecker> weakSelf = weak_from_this();
    FLKMainQueue::main()->post([weakSelf, generation] {
        if (auto self = weakSelf.lock()) self->startPolling(generation);
    });
    return false;
}

void FLKTimelineTrackReadinessChecker::startPolling(uint64_t generation) {
    std::shared_ptr<FLKTimer> previous;
    {
        std::lock_guard lock(mutex_);
        if (generation != generation_) return;
        previous = std::move(pollingTimer_);
    }
    stopTimer(std::move(previous));
    setStatus(kPolling);
    std::weak_ptr<FLKTimelineTrackReadinessChecker> weakSelf = weak_from_this();
    auto timer = FLKTimer::scheduledTimer(kPollingInterval, true, [weakSelf, generation](FLKTimer& timer) {
        if (auto self = weakSelf.lock()) {
            self->pollingTimerFired(timer, generation);
        } else {
            timer.invalidate();
        }
    });
    std::lock_guard lock(mutex_);
    pollingTimer_ = std::move(timer);
}

void FLKTimelineTrackReadinessChecker::pollingTimerFired(FLKTimer& timer, uint64_t generation) {
    std::vector<std::shared_ptr<FLKTimelineTrack>> tracks;
    {
        std::lock_guard lock(mutex_);
        if (generation != generation_) {
            timer.invalidate();
            return;
        }
        tracks = currentTracks_;
    }
    if (!allReady(tracks)) return;
    timer.invalidate();
    {
        std::lock_guard lock(mutex_);
        if (pollingTimer_.get() == &timer) pollingTimer_.reset();
    }
    setStatus(kBecameReady);
}

void FLKTimelineTrackReadinessChecker::endChecking() {
    std::shared_ptr<FLKTimer> timer;
    {
        std::lock_guard lock(mutex_);
        ++generation_;
        currentTracks_.clear();
        timer = std::move(pollingTimer_);
    }
    stopTimer(std::move(timer));
    setStatus(kIdle);
}

void FLKTimelineTrackReadinessChecker::stopTimer(std::shared_ptr<FLKTimer> timer) {
    if (!timer) return;
    // A timer belongs to the main thread; from elsewhere it is stopped there.
    auto queue = FLKMainQueue::main();
    if (queue->isMainThread()) {
        timer->invalidate();
    } else {
        queue->post([timer] { timer->invalidate(); });
    }
}

void FLKTimelineTrackReadinessChecker::setStatus(Status status) {
    status_.store(status);
    tellDelegate(status);
}

void FLKTimelineTrackReadinessChecker::tellDelegate(Status status) {
    std::shared_ptr<FLKTimelineTrackReadinessCheckerDelegate> delegate;
    {
        std::lock_guard lock(mutex_);
        delegate = delegate_.lock();
    }
    if (delegate) delegate->checker(*this, status);
}

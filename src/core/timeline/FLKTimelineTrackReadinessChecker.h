#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "core/timeline/FLKTimelineTrack.h"
#include "core/timeline/FLKTimelineTrackReadinessCheckerDelegate.h"

class FLKTimer;

// Answers whether every track can show its frame now; when one cannot, it
// polls the tracks on the main queue every 0.1 s until they all can.
class FLKTimelineTrackReadinessChecker : public std::enable_shared_from_this<FLKTimelineTrackReadinessChecker> {
public:
    enum Status : int64_t { kIdle = 0, kPolling = 1, kBecameReady = 2, kNotReady = 3 };
    static constexpr double kPollingInterval = 0.1;

    void setDelegate(std::weak_ptr<FLKTimelineTrackReadinessCheckerDelegate> delegate);
    int64_t status() const { return status_.load(); }
    std::vector<std::shared_ptr<FLKTimelineTrack>> currentTracks() const;
    bool isPolling() const;
    // Held back by a track that is not ready, until it is or checking ends.
    bool isWaiting() const {
        const int64_t status = status_.load();
        return status == kNotReady || status == kPolling;
    }

    // Remembers the tracks; when one is not ready, reports "not ready" and
    // has the main queue start polling. Any thread.
    bool checkReadinessForTracks(const std::vector<std::shared_ptr<FLKTimelineTrack>>& tracks);
    // Forgets the tracks and stops polling, including a start still on its
    // way to the main queue. Any thread.
    void endChecking();

private:
    static bool allReady(const std::vector<std::shared_ptr<FLKTimelineTrack>>& tracks);
    void startPolling(uint64_t generation);
    void pollingTimerFired(FLKTimer& timer, uint64_t generation);
    void stopTimer(std::shared_ptr<FLKTimer> timer);
    void setStatus(Status status);
    void tellDelegate(Status status);

    std::atomic<int64_t> status_{kIdle};
    mutable std::mutex mutex_;
    std::weak_ptr<FLKTimelineTrackReadinessCheckerDelegate> delegate_;  // guarded by mutex_
    std::vector<std::shared_ptr<FLKTimelineTrack>> currentTracks_;      // guarded by mutex_
    std::shared_ptr<FLKTimer> pollingTimer_;                            // guarded by mutex_; fires on main
    // Bumped by endChecking so that a polling start or firing from before it
    // does nothing (otherwise a pause while waiting would resume playback).
    uint64_t generation_ = 0;  // guarded by mutex_
};

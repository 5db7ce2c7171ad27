#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/platform/FLKSerializable.h"
#include "core/platform/FLKTimeUpdatable.h"
#include "core/platform/FLKUpdatableTimer.h"
#include "core/timeline/FLKTimelineTrack.h"
#include "core/timeline/FLKTimelineTrackReadinessChecker.h"
#include "core/timeline/FLKTimelineVideoTrack.h"

// The edit of a document: its tracks, played by a clock. Edits happen on the
// main thread; the clock's queue calls update() and reads the tracks.
class FLKScene;

class FLKTimeline : public FLKSerializable,
                    public FLKTimeUpdatable,
                    public FLKTimelineTrackReadinessCheckerDelegate,
                    public std::enable_shared_from_this<FLKTimeline> {
    struct Passkey {};

public:
    using Tracks = std::vector<std::shared_ptr<FLKTimelineTrack>>;
    using TracksObserver = std::function<void()>;

    // A new timeline with a fresh identifier, driven by `timer`.
    static std::shared_ptr<FLKTimeline> timelineWithTimer(std::weak_ptr<FLKUpdatableTimer> timer);
    // The process-wide timeline: made on first use, driven by the display
    // clock, until another one is made the master.
    static std::shared_ptr<FLKTimeline> masterTimeline();
    static void setMasterTimeline(std::shared_ptr<FLKTimeline> timeline);

    FLKTimeline(Passkey, std::string identifier, std::weak_ptr<FLKUpdatableTimer> timer);

    // A new timeline (fresh identifier) with copies of this one's tracks and
    // their clips, driven by `timer`: what an export plays so the editor's
    // timeline is never touched. Video tracks get buffer managers of their own.
    // Any thread.
    std::shared_ptr<FLKTimeline> copyWithTimer(std::weak_ptr<FLKUpdatableTimer> timer) const;

    // Attached to the display clock.
    static std::shared_ptr<FLKTimeline> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKTimeline"; }

    const std::string& identifier() const { return identifier_; }
    std::string name() const;
    void setName(std::string name);
    bool isEqual(const FLKTimeline& other) const { return identifier_ == other.identifier_; }
    size_t hash() const { return std::hash<std::string>{}(identifier_); }

    std::shared_ptr<FLKUpdatableTimer> timer() const;
    void setTimer(std::weak_ptr<FLKUpdatableTimer> timer);
    const std::shared_ptr<FLKTimelineTrackReadinessChecker>& readinessChecker() const { return readinessChecker_; }

    Tracks tracks() const;
    std::shared_ptr<FLKTimelineVideoTrack> createVideoTrack();
    void addTrack(const std::shared_ptr<FLKTimelineTrack>& track);
    void removeTrack(const std::shared_ptr<FLKTimelineTrack>& track);
    void setTracks(const Tracks& tracks);
    // Told after every change of `tracks`. Main thread only.
    uint64_t addTracksObserver(TracksObserver observer);
    void removeTracksObserver(uint64_t token);

    // The longest track; 0 without tracks.
    double duration() const;
    double currentTime() const override { return currentTime_.load(); }
    // While playing, playing goes on from t.
    void setCurrentTime(double t);

    bool isPlaying() const { return isPlaying_.load(); }
    // Playing, or held until the tracks can show their frames: what the user
    // sees as playing.
    bool isPlayingOrWaiting() const { return isPlaying() || readinessChecker_->isWaiting(); }
    bool isLooping() const { return looping_.load(); }
    void setLooping(bool looping) { looping_.store(looping); }
    void play();
    void pause();
    // Play/Pause as the user means it: pauses while waiting for frames too.
    void togglePlay();
    // From the start, playing.
    void loop();
    bool update(double time) override;
    // Only a timeline played through has its decoders notify it.
    std::shared_ptr<FLKProgressSignal> progressSignal() const override {
        return playsThrough_.load() ? progressSignal_ : nullptr;
    }
    // Played once through by a clock that waits (an export): while a track
    // is not ready the time is refused without pausing, and the tracks'
    // decoders notify progressSignal() as frames arrive. Before playing.
    void setPlaysThrough();

    // Makes the first track (a new video track when there is none) the
    // provider of the scene's video sprite; a video container without a video
    // gets a timeline video sprite.
    void mapScene(const std::shared_ptr<FLKScene>& scene);

    // Asset URLs of every video clip, without duplicates, in no defined order.
    std::vector<std::filesystem::path> allResourceURLs() const;

    void checker(FLKTimelineTrackReadinessChecker& checker, int64_t status) override;

private:
    void pauseInternally();
    // The time and the tracks' times, leaving the clock alone.
    void moveTo(double t);
    void notifyTracksObservers();

    const std::string identifier_;
    std::string name_ = "Master";  // guarded by mutex_
    mutable std::mutex mutex_;
    Tracks tracks_;                          // guarded by mutex_
    std::weak_ptr<FLKUpdatableTimer> timer_;  // guarded by mutex_
    std::atomic<double> currentTime_{0};
    std::atomic<bool> isPlaying_{false};
    std::atomic<bool> looping_{false};
    std::atomic<bool> playsThrough_{false};
    const std::shared_ptr<FLKProgressSignal> progressSignal_;
    const std::shared_ptr<FLKTimelineTrackReadinessChecker> readinessChecker_;
    std::map<uint64_t, TracksObserver> observers_;  // main thread only
    uint64_t nextObserverToken_ = 1;                // main thread only
};

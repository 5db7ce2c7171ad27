#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/platform/FLKSerializable.h"
#include "core/timeline/FLKTimelineClip.h"

// An ordered run of clips on the time axis, without duplicates (by clip
// equality). Every edit builds a new clip list and swaps it in, so readers on
// the clock's queue always see a whole list; edits themselves happen on the
// main thread.
class FLKTimelineTrack : public FLKSerializable {
public:
    using Clips = std::vector<std::shared_ptr<FLKTimelineClip>>;
    using ClipsObserver = std::function<void()>;

    explicit FLKTimelineTrack(std::string identifier);

    static std::shared_ptr<FLKTimelineTrack> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKTimelineTrack"; }

    const std::string& identifier() const { return identifier_; }
    Clips clips() const;
    // End of the last clip; 0 when empty.
    double duration() const;

    double currentTime() const { return currentTime_.load(); }
    virtual void setCurrentTime(double t) { currentTime_.store(t); }
    void scrubToTime(double t) { setCurrentTime(t); }

    virtual bool isReady() const { return ready_.load(); }
    void setReady(bool ready) { ready_.store(ready); }

    // Appends, moving nothing.
    virtual void addClip(const std::shared_ptr<FLKTimelineClip>& clip);
    // Moves every later clip by the inserted clip's shiftDuration. An index
    // past the end appends; a clip already on the track is not inserted again.
    virtual void insertClip(const std::shared_ptr<FLKTimelineClip>& clip, size_t index);
    // Moves every later clip earlier by the removed clip's shiftDuration.
    virtual void removeClip(const std::shared_ptr<FLKTimelineClip>& clip);
    // Puts `newClip` at the old clip's index; later clips move by the change
    // of start plus the change of shiftDuration.
    virtual void replaceClip(const std::shared_ptr<FLKTimelineClip>& oldClip,
                             const std::shared_ptr<FLKTimelineClip>& newClip);
    virtual void setClips(const Clips& clips);

    std::optional<size_t> indexOfClip(const std::shared_ptr<FLKTimelineClip>& clip) const;
    // Whether the clip's range overlaps some clip of the track by a positive
    // length.
    bool intersectsAnyClip(const std::shared_ptr<FLKTimelineClip>& clip) const;
    // Clips up to and including `afterClip` as they are, the later ones moved by t.
    static Clips shiftedClips(const Clips& clips, const std::shared_ptr<FLKTimelineClip>& afterClip, double t);

    // Told after every change of `clips`, on the thread that made it. Main thread only.
    uint64_t addClipsObserver(ClipsObserver observer);
    void removeClipsObserver(uint64_t token);

    // Result of the consistency pass run after every edit: whether each clip
    // starts where the one before it ends (a transition overlapping its
    // neighbours by its length). Edits in several steps pass through
    // inconsistent states, so this is informative only.
    bool clipsFollowOneAnother() const { return consistent_.load(); }

protected:
    // Swaps in the new list, runs the consistency pass and tells observers.
    void commitClips(Clips clips);
    static std::optional<size_t> indexOfClipIn(const Clips& clips, const std::shared_ptr<FLKTimelineClip>& clip);

private:
    static bool checkConsistency(const Clips& clips);

    const std::string identifier_;
    mutable std::mutex clipsMutex_;
    Clips clips_;  // guarded by clipsMutex_
    std::atomic<double> currentTime_{0};
    std::atomic<bool> ready_{true};
    std::atomic<bool> consistent_{true};
    std::map<uint64_t, ClipsObserver> observers_;  // main thread only
    uint64_t nextObserverToken_ = 1;               // main thread only
};

#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "core/timeline/FLKTimelineBufferManager.h"
#include "core/timeline/FLKTimelineClipSource.h"
#include "core/timeline/FLKVideoTransitionBufferSampleReader.h"

// One transition reader per transition clip; buffering a transition buffers
// the two clips that it joins.
//
// Threads: edits and buffering requests come from the main thread, lookups
// from the render thread and the clock queue; mutex_ guards the fields.
class FLKTimelineTransitionBufferManager : public FLKTimelineBufferManager {
public:
    // The track owns the manager and outlives it.
    FLKTimelineTransitionBufferManager(std::weak_ptr<FLKVideoBufferSource> videoBufferSource,
                                       const FLKTimelineClipSource& clipSource);

    void createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) override;
    void removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) override;
    std::shared_ptr<FLKVideoSampleReader> bufferForClip(const std::shared_ptr<FLKTimelineClip>& clip,
                                                        double t) override;
    void startBufferingForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override;

    // Kept in step with the track; transitions are not cut into segments.
    void setBufferWidth(double seconds) override;
    void setBufferingMarginTime(double seconds) override;

private:
    const std::weak_ptr<FLKVideoBufferSource> videoBufferSource_;
    const FLKTimelineClipSource& clipSource_;
    mutable std::mutex mutex_;
    double bufferWidth_ = 5.0;          // guarded by mutex_
    double bufferingMarginTime_ = 2.5;  // guarded by mutex_
    // By clip identity (a transition is the same clip however it is moved).
    std::map<std::string, std::shared_ptr<FLKVideoTransitionBufferSampleReader>> transitionBuffers_;  // guarded by mutex_
};

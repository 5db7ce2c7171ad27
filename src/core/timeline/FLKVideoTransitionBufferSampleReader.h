#pragma once

#include <memory>
#include <mutex>

#include "core/gpu/FLKImageFilter.h"
#include "core/gpu/FLKPlaceholderTextureProvider.h"
#include "core/timeline/FLKTimeRange.h"
#include "core/timeline/FLKTimelineClipSource.h"
#include "core/timeline/FLKVideoBufferSource.h"
#include "core/timeline/FLKVideoSampleReader.h"
#include "core/timeline/FLKVideoTransitionClip.h"

// The frames of a transition clip: the two joined clips' frames at the same
// timeline time, mixed by the transition's kernel. Decodes nothing itself.
//
// Threads: sources are set on the main thread before use; lookups run on the
// render thread (textureForClip) or any thread (hasTextureForClip).
class FLKVideoTransitionBufferSampleReader : public FLKVideoSampleReader {
public:
    explicit FLKVideoTransitionBufferSampleReader(std::shared_ptr<FLKVideoTransitionClip> transitionClip);

    bool readWithFinishedBlock(const std::function<void()>& /*block*/) { return false; }
    void cancelReading() {}
    void reset() {}

    uint64_t status() const override { return kIdle; }
    FLKTimeRange readRange() const { return transitionClip_->timeRange(); }
    // 1 - (end - t) / duration, in single precision.
    float progressAtTime(double t) const;
    static float progressOfClipAtTime(const FLKVideoTransitionClip& clip, double t);

    std::shared_ptr<FLKGPUTexture> textureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override;
    bool hasTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override;

    const std::shared_ptr<FLKVideoTransitionClip>& transitionClip() const { return transitionClip_; }
    void setBufferSource(std::weak_ptr<FLKVideoBufferSource> source);
    void setClipSource(const FLKTimelineClipSource* source);
    // Kept for the owner; the transition's own kernel does the mixing.
    std::shared_ptr<FLKImageFilter> filter() const;
    void setFilter(std::shared_ptr<FLKImageFilter> filter);

private:
    struct Sources {
        std::shared_ptr<FLKTimelineClip> fromClip, toClip;
        std::shared_ptr<FLKVideoSampleReader> fromReader, toReader;
    };
    bool resolve(double t, Sources* sources) const;

    const std::shared_ptr<FLKVideoTransitionClip> transitionClip_;
    const std::shared_ptr<FLKPlaceholderTextureProvider> fromTextureProvider_;
    const std::shared_ptr<FLKPlaceholderTextureProvider> toTextureProvider_;

    mutable std::mutex mutex_;
    std::weak_ptr<FLKVideoBufferSource> bufferSource_;  // guarded by mutex_
    const FLKTimelineClipSource* clipSource_ = nullptr;  // guarded by mutex_; the track, which outlives its managers
    std::shared_ptr<FLKImageFilter> filter_;             // guarded by mutex_
    std::mutex mixMutex_;  // keeps the transition's inputs and its output together
};

#pragma once

#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "core/timeline/FLKTimeRange.h"
#include "core/timeline/FLKTimelineBufferManager.h"
#include "core/timeline/FLKTimelineVideoTrackClipSource.h"
#include "core/timeline/FLKVideoBufferSampleReader.h"

class FLKVideoClip;

// Cuts each asset of a track into segments of `bufferWidth` seconds, one
// reader per segment shared by every clip of that asset, starts reading a
// segment `bufferingMarginTime` before the play head reaches it, and keeps
// only the current segment and `maxBackBuffers` earlier ones decoded. With a
// decode-ahead time each segment holds only the frames about to be shown.
//
// Threads: edits and buffering requests come from the main thread, lookups
// from the render thread and the clock queue; mutex_ guards every field.
class FLKTimelineVideoBufferManager : public FLKTimelineBufferManager {
public:
    using Readers = std::vector<std::shared_ptr<FLKVideoBufferSampleReader>>;

    // The track owns the manager and outlives it.
    explicit FLKTimelineVideoBufferManager(const FLKTimelineVideoTrackClipSource& clipSource);

    // Makes every new video track use these managers (the video manager and
    // the transition manager over it).
    static void installAsTrackBufferManagers();

    void createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) override;
    void removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) override;
    std::shared_ptr<FLKVideoSampleReader> bufferForClip(const std::shared_ptr<FLKTimelineClip>& clip,
                                                        double t) override;
    void startBufferingForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override;

    double bufferWidth() const;
    void setBufferWidth(double seconds) override;
    double bufferingMarginTime() const;
    void setBufferingMarginTime(double seconds) override;
    double decodeAheadTime() const;
    void setDecodeAheadTime(double seconds) override;
    void setProgressSignal(std::shared_ptr<FLKProgressSignal> signal) override;
    uint64_t maxBackBuffers() const;
    void setMaxBackBuffers(uint64_t count);

    // Cancels and drops the segments of every asset, decoded frames too, for
    // a track that is never shown. Clips added later get segments again.
    void removeAllBuffers();

    Readers buffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) const;
    uint64_t referenceCountForAsset(const std::filesystem::path& assetURL) const;
    bool hasBuffersForAsset(const std::filesystem::path& assetURL) const;
    // The segment to read next for time t: the one holding t when it is
    // idle, else the first idle one whose trigger range holds t.
    std::shared_ptr<FLKVideoBufferSampleReader> readableBufferForClip(const std::shared_ptr<FLKTimelineClip>& clip,
                                                                      double t) const;
    FLKTimeRange readTriggerTimeRangeForRange(FLKTimeRange range) const;
    std::shared_ptr<FLKVideoBufferSampleReader> currentBuffer() const;
    Readers backBuffers() const;

private:
    const Readers* readersLocked(const std::shared_ptr<FLKVideoClip>& clip) const;
    std::shared_ptr<FLKVideoBufferSampleReader> readableBufferLocked(const std::shared_ptr<FLKVideoClip>& clip,
                                                                     double t) const;
    void rememberRequestLocked(const std::shared_ptr<FLKVideoClip>& clip, double t);
    void resetCancelledBuffersLocked(const std::shared_ptr<FLKVideoClip>& clip, double t);
    void resetFirstBackBufferIfNecessaryLocked();
    bool isReadAheadForLatestRequestLocked(const std::shared_ptr<FLKVideoBufferSampleReader>& reader) const;

    static constexpr size_t kRememberedRequests = 4;

    const FLKTimelineVideoTrackClipSource& clipSource_;
    mutable std::mutex mutex_;
    double bufferWidth_ = 5.0;                                     // guarded by mutex_
    double bufferingMarginTime_ = 2.5;                             // guarded by mutex_
    double decodeAheadTime_ = FLKDecodeWindow::kUnlimited;        // guarded by mutex_
    std::shared_ptr<FLKProgressSignal> progressSignal_;             // guarded by mutex_
    std::map<std::filesystem::path, Readers> assetBuffers_;       // guarded by mutex_
    Readers backBuffers_;                                          // guarded by mutex_; oldest first
    std::shared_ptr<FLKVideoBufferSampleReader> currentBuffer_;    // guarded by mutex_
    uint64_t maxBackBuffers_ = 1;                                  // guarded by mutex_
    // The media time of each asset's latest buffering request.
    std::map<std::filesystem::path, double> latestRequestTimes_;  // guarded by mutex_
    // Segments holding the times of the latest buffering requests, oldest first.
    std::deque<std::shared_ptr<FLKVideoBufferSampleReader>> recentlyRequested_;  // guarded by mutex_
};

#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "core/gpu/FLKImageFilter.h"
#include "core/gpu/FLKTexture.h"
#include "core/gpu/FLKTextureBuffer.h"
#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetReader.h"
#include "core/media/FLKVideoFrame.h"
#include "core/timeline/FLKDecodeWindow.h"
#include "core/timeline/FLKTimeRange.h"
#include "core/timeline/FLKVideoSampleReader.h"

class FLKDispatchQueue;
class FLKProgressSignal;

// Decodes one segment of an asset's video, in one go on a queue of its own,
// into a ring of 720 x 720 bi-planar textures kept until reset, and answers
// the frame shown at a time. Given a decode-ahead time, it decodes only that
// far past the frames looked up and lets the earlier ones go instead.
//
// Threads: reads, cancel and reset come from the main thread; lookups from the
// render thread (textureForClip) or any thread (hasTextureForClip); decoding
// runs on the reader's own queue.
class FLKVideoBufferSampleReader : public FLKVideoSampleReader,
                                   public std::enable_shared_from_this<FLKVideoBufferSampleReader> {
public:
    using FinishedBlock = std::function<void()>;

    static constexpr uint64_t kPixelFormat = 241;
    static constexpr uint32_t kCVPixelFormat = 0x34323076;  // "420v"

    FLKVideoBufferSampleReader(std::shared_ptr<FLKAsset> asset, FLKTimeRange readRange);
    ~FLKVideoBufferSampleReader() override;

    // Reads the whole segment. The block runs on the reader's queue.
    bool readWithFinishedBlock(FinishedBlock block = {});
    // Answers whether a decoding job was started for media time `target`.
    bool readTo(double target, FinishedBlock block = {});
    void cancelReading();
    void reset();
    // Seconds decoded past the latest lookup, for a timeline played straight
    // through; FLKDecodeWindow::kUnlimited (the default) keeps every frame.
    void setDecodeAheadTime(double seconds) { decodeWindow_->setAheadTime(seconds); }
    // Notified as frames arrive, when a read ends and when reading stops.
    void setProgressSignal(std::shared_ptr<FLKProgressSignal> signal);
    // Whether decoding is paused until the frames decoded are looked up.
    bool isWaitingForLookups() const { return decodeWindow_->isJobWaiting(); }

    std::shared_ptr<FLKGPUTexture> textureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override;
    std::shared_ptr<FLKGPUTexture> displayTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip,
                                                         double t) override;
    bool hasTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) override;
    // The decoded frame (before filtering) shown for the clip at timeline time t.
    std::shared_ptr<FLKTexture> sampleTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t,
                                                     bool shown = false) const;
    // The decoded frame shown at a media time of the segment: the latest one
    // stamped before it, however far back (at an exact frame boundary the
    // frame before answers). Null until a later frame or the segment's end
    // has been decoded, since a frame still to come might answer instead.
    // `shown` when it is about to be drawn rather than only looked for.
    std::shared_ptr<FLKTexture> sampleTextureAtMediaTime(double mediaTime, bool shown = false) const;
    size_t numberOfBufferedFrames() const;

    const std::shared_ptr<FLKAsset>& asset() const { return asset_; }
    const FLKTimeRange& readRange() const { return readRange_; }
    double widthInSeconds() const { return widthInSeconds_; }
    uint64_t status() const override { return status_.load(); }
    bool isBuffering() const { return isBuffering_.load(); }
    uint64_t pixelFormat() const { return kPixelFormat; }
    uint32_t cvPixelFormat() const { return kCVPixelFormat; }

    std::shared_ptr<FLKImageFilter> filter() const;
    void setFilter(std::shared_ptr<FLKImageFilter> filter);

private:
    std::shared_ptr<FLKGPUTexture> frameTexture(const std::shared_ptr<FLKTimelineClip>& clip, double t, bool planes);
    struct BufferingJob {
        double target;
        FinishedBlock block;
        std::shared_ptr<FLKAssetReader> reader;
        uint64_t generation;
        std::shared_ptr<FLKDecodeWindow> window;
        uint64_t ticket;
    };
    // Holds the reader only while it adds a frame: a job waiting for room
    // must not keep a dropped reader alive.
    static void performBuffering(const std::weak_ptr<FLKVideoBufferSampleReader>& weakSelf, const BufferingJob& job);
    void finishBuffering(const BufferingJob& job);
    void addFrame(const std::shared_ptr<FLKVideoFrame>& frame, uint64_t generation);
    // With a decode-ahead time: drops the frames before those recently shown
    // (the ring's contents, not the reader's state).
    void releaseShownFramesLocked() const;
    std::shared_ptr<FLKAssetReader> assetReaderLocked();
    std::shared_ptr<FLKDispatchQueue> bufferingQueueLocked();
    void rememberUploadLocked(const std::shared_ptr<FLKTexture>& sample);
    void forgetUploads();
    void notifyProgress() const;
    void stopReading();

    // Frames shown lately keep their upload; older ones drop it, so a segment
    // holds its frames once in memory rather than twice. Two cover a
    // transition whose clips share this segment.
    static constexpr size_t kUploadedFrames = 2;

    const std::shared_ptr<FLKAsset> asset_;
    const FLKTimeRange readRange_;
    const double widthInSeconds_;
    const std::shared_ptr<FLKDecodeWindow> decodeWindow_ = std::make_shared<FLKDecodeWindow>();

    std::atomic<uint64_t> status_{kIdle};       // written on main and by the job under mutex_, read anywhere
    std::atomic<bool> isBuffering_{false};      // same
    std::atomic<bool> hasColorimetry_{false};   // written by the job, read on the render thread
    std::atomic<FLKColorMatrix> colorMatrix_{FLKColorMatrix::BT709};
    std::atomic<FLKColorRange> colorRange_{FLKColorRange::Limited};

    mutable std::mutex mutex_;
    std::shared_ptr<FLKAssetReader> assetReader_;       // guarded by mutex_; made on first use
    std::shared_ptr<FLKDispatchQueue> bufferingQueue_;  // guarded by mutex_; made on first use
    std::shared_ptr<FLKTextureBuffer> textureBuffer_;   // guarded by mutex_, ring contents too
    uint64_t generation_ = 0;  // guarded by mutex_; a job of an older generation no longer writes
    std::shared_ptr<FLKImageFilter> filter_;            // guarded by mutex_
    std::shared_ptr<FLKProgressSignal> progressSignal_;  // guarded by mutex_

    std::mutex lookupMutex_;  // keeps the filter's provider and its output together
    std::deque<std::shared_ptr<FLKTexture>> uploaded_;  // guarded by lookupMutex_; oldest first
};

#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "core/media/FLKAssetImageGenerator.h"
#include "core/platform/FLKSize.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoClipStaticFrame.h"

class FLKDispatchQueue;

// The thumbnails drawn inside a clip's cell: as tall as the cell, as many as
// cover its width plus one, generated in the background and cached.
//
// Threads: called on the main thread; images are made on the grabber's own
// queue, where they join the cache (guarded by mutex_); the handler of
// generated frames runs on the main queue. Destroying the grabber waits for
// the image being made and drops the rest.
class FLKVideoClipStaticFramesGrabber : public std::enable_shared_from_this<FLKVideoClipStaticFramesGrabber> {
public:
    using Frames = std::vector<std::shared_ptr<FLKVideoClipStaticFrame>>;
    using FrameHandler = std::function<void(const std::shared_ptr<FLKVideoClipStaticFrame>&)>;

    explicit FLKVideoClipStaticFramesGrabber(std::shared_ptr<FLKVideoClip> videoClip);
    ~FLKVideoClipStaticFramesGrabber();

    // Times in seconds of the clip's media; the size of the cell in points.
    // Cached frames from `start` on are handed over at once; otherwise new
    // ones are generated and handed over one by one as they arrive.
    void grabFramesFromTime(double start, double end, FLKSize timelineSize, FrameHandler frameHandler);
    Frames grabbedFramesFromTime(double time, uint64_t numFrames) const;
    std::shared_ptr<FLKVideoClipStaticFrame> firstFrame() const;

    static FLKSize maxSizeForImageSize(FLKSize imageSize, FLKSize timelineSize);
    static uint64_t numberOfFramesForImageSize(FLKSize imageSize, FLKSize timelineSize);

    const std::shared_ptr<FLKVideoClip>& videoClip() const { return videoClip_; }

private:
    void generateImages(const std::vector<double>& times, FLKSize maximumSize, const FrameHandler& frameHandler);

    const std::shared_ptr<FLKVideoClip> videoClip_;
    const std::shared_ptr<FLKDispatchQueue> queue_;
    std::unique_ptr<FLKAssetImageGenerator> imageGenerator_;  // grabber queue only; made on first use
    std::atomic<bool> abandoned_{false};  // set by the destructor, read on the grabber queue
    mutable std::mutex mutex_;
    Frames grabbedFrames_;  // guarded by mutex_; in order of arrival
};

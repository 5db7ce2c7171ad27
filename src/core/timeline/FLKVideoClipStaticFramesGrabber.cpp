#include "core/timeline/FLKVideoClipStaticFramesGrabber.h"

#include <cmath>

#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKFreedMemory.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKThreadPriority.h"

namespace {
// Seconds rounded to a whole number of ticks of `timescale` a second.
double timeWithTimescale(double seconds, int32_t timescale) {
    return timescale > 0 ? std::round(seconds * timescale) / timescale : seconds;
}
}  // namespace

FLKVideoClipStaticFramesGrabber::FLKVideoClipStaticFramesGrabber(std::shared_ptr<FLKVideoClip> videoClip)
    : videoClip_(std::move(videoClip)),
      queue_(FLKDispatchQueue::make("org.flickwell.Flickwell.FLKVideoClipStaticFramesGrabber.queue")) {}

// Waits for the picture being made, if any: the rest are not made once the
// owner let go, and none of the grabber's work outlives it.
FLKVideoClipStaticFramesGrabber::~FLKVideoClipStaticFramesGrabber() {
    abandoned_.store(true);
    queue_->sync([] {});
}

FLKSize FLKVideoClipStaticFramesGrabber::maxSizeForImageSize(FLKSize imageSize, FLKSize timelineSize) {
    const float width = std::ceil(static_cast<float>(timelineSize.height / imageSize.height * imageSize.width));
    return {static_cast<double>(width), timelineSize.height};
}

uint64_t FLKVideoClipStaticFramesGrabber::numberOfFramesForImageSize(FLKSize imageSize, FLKSize timelineSize) {
    const FLKSize thumbnail = maxSizeForImageSize(imageSize, timelineSize);
    return static_cast<uint64_t>(std::ceil(static_cast<float>(timelineSize.width / thumbnail.width))) + 1;
}

void FLKVideoClipStaticFramesGrabber::grabFramesFromTime(double start, double end, FLKSize timelineSize,
                                                         FrameHandler frameHandler) {
    const auto& track = videoClip_->videoTrack();
    if (!track || !videoClip_->asset()) return;
    const FLKSize thumbnail = maxSizeForImageSize(track->presentationSize(), timelineSize);
    const uint64_t count = numberOfFramesForImageSize(track->presentationSize(), timelineSize);

    const Frames cached = grabbedFramesFromTime(start, count);
    if (!cached.empty()) {
        for (const auto& frame : cached) frameHandler(frame);
        return;
    }
    {
        std::lock_guard lock(mutex_);
        grabbedFrames_.clear();
    }
    const auto timescale = static_cast<int32_t>(track->nominalFrameRate);
    const float step = static_cast<float>(end - start) / static_cast<float>(count);
    std::vector<double> times;
    double time = start;
    for (uint64_t i = 0; i < count; ++i, time += step) times.push_back(timeWithTimescale(time, timescale));

    // The destructor waits for the queue, so the block may use this grabber.
    queue_->async([this, times = std::move(times), thumbnail, frameHandler = std::move(frameHandler)] {
        generateImages(times, thumbnail, frameHandler);
    });
}

void FLKVideoClipStaticFramesGrabber::generateImages(const std::vector<double>& times, FLKSize maximumSize,
                                                     const FrameHandler& frameHandler) {
    if (!imageGenerator_) {
        // Thumbnails can wait; the decoding of playback cannot. Set before the
        // decoder exists, so its own threads start at this priority too.
        flk::lowerCurrentThreadPriority();
        imageGenerator_ = std::make_unique<FLKAssetImageGenerator>(videoClip_->asset());
        imageGenerator_->setDraft(true);
    }
    imageGenerator_->setMaximumSize(maximumSize);
    auto deliver = [this, &frameHandler](double, const FLKImage* image, double actualTime, const FLKError*) {
        auto picture = image ? std::make_shared<const FLKImage>(*image) : nullptr;
        auto frame = FLKVideoClipStaticFrame::staticFrameWithImage(std::move(picture), actualTime);
        {
            std::lock_guard lock(mutex_);
            grabbedFrames_.push_back(frame);
        }
        FLKMainQueue::main()->post([frameHandler, frame] { frameHandler(frame); });
    };
    // One at a time, so that a grabber let go of stops after the current one.
    for (double time : times) {
        if (abandoned_.load()) return;
        imageGenerator_->generateImagesForTimes({time}, deliver);
    }
    // Its decoder holds tens of megabytes of reference frames, and the next
    // batch (another zoom, another clip length) may be minutes away.
    imageGenerator_.reset();
    flk::giveFreedMemoryBack();
}

FLKVideoClipStaticFramesGrabber::Frames FLKVideoClipStaticFramesGrabber::grabbedFramesFromTime(
    double time, uint64_t numFrames) const {
    std::lock_guard lock(mutex_);
    Frames frames;
    for (const auto& frame : grabbedFrames_) {
        if (frames.size() >= numFrames) break;
        if (frame->time() >= time) frames.push_back(frame);
    }
    return frames;
}

std::shared_ptr<FLKVideoClipStaticFrame> FLKVideoClipStaticFramesGrabber::firstFrame() const {
    std::lock_guard lock(mutex_);
    return grabbedFrames_.empty() ? nullptr : grabbedFrames_.front();
}

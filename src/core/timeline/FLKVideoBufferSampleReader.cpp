#include "core/timeline/FLKVideoBufferSampleReader.h"

#include <chrono>
#include <limits>

#include "core/gpu/FLKBiplanarConverterFilter.h"
#include "core/gpu/FLKBiplanarTexture.h"
#include "core/gpu/FLKContext.h"
#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKProgressSignal.h"
#include "core/platform/FLKStageTimes.h"
#include "core/timeline/FLKVideoClip.h"

namespace {
// Frame times are stamped in single precision: a lookup this close to a
// frame's stamp is at that frame's start.
constexpr double kTimeTolerance = 0.0001;

// A ring that in practice never wraps: every frame of the segment stays.
constexpr unsigned kRingSize = 0xFFFFFFFFu;

FLKNV12Frame nv12FrameWithFrame(const std::shared_ptr<FLKVideoFrame>& frame) {
    FLKNV12Frame planes;
    planes.width = frame->width();
    planes.height = frame->height();
    planes.luma = frame->yPlane();
    planes.lumaStride = frame->yStride();
    planes.chroma = frame->uvPlane();
    planes.chromaStride = frame->uvStride();
    planes.owner = frame;
    return planes;
}
}  // namespace

FLKVideoBufferSampleReader::FLKVideoBufferSampleReader(std::shared_ptr<FLKAsset> asset, FLKTimeRange readRange)
    : asset_(std::move(asset)), readRange_(readRange), widthInSeconds_(readRange.end - readRange.start) {}

FLKVideoBufferSampleReader::~FLKVideoBufferSampleReader() {
    // A job still running finds the reader gone and stops at its next frame.
    if (assetReader_) assetReader_->cancelReading();
    decodeWindow_->interrupt();
}

bool FLKVideoBufferSampleReader::readWithFinishedBlock(FinishedBlock block) {
    return readTo(readRange_.end, std::move(block));
}

bool FLKVideoBufferSampleReader::readTo(double target, FinishedBlock block) {
    flk::log("try reading to %f", target);
    std::lock_guard lock(mutex_);
    if (isBuffering_.load()) return false;
    isBuffering_.store(true);
    status_.store(kReading);

    auto reader = assetReaderLocked();
    switch (reader->status()) {
        case FLKAssetReaderStatus::Unknown: reader->startReading(); break;
        case FLKAssetReaderStatus::Reading: break;
        default:
            // Nothing more can come: isBuffering stays set so later reads
            // are refused until reset.
            status_.store(kFinished);
            return false;
    }
    // startReading may have failed: the job then ends at once with no frames.
    BufferingJob job{target, std::move(block), reader, generation_, decodeWindow_,
                     decodeWindow_->beginJob(readRange_.start)};
    bufferingQueueLocked()->async([weakSelf = weak_from_this(), job = std::move(job)] { performBuffering(weakSelf, job); });
    return true;
}

void FLKVideoBufferSampleReader::performBuffering(const std::weak_ptr<FLKVideoBufferSampleReader>& weakSelf,
                                                  const BufferingJob& job) {
    flk::log("Reading to %f", job.target);
    const auto started = std::chrono::steady_clock::now();
    double decodedTime = -std::numeric_limits<double>::infinity();
    while (true) {
        bool hasRoom;
        {
            FLKStageTimes::WaitScope waiting(FLKStageTimes::kDecode, FLKStageTimes::WaitScope::On::output);
            hasRoom = job.window->waitForRoom(job.ticket, decodedTime);
        }
        // Interrupted, dropped or cancelled: the decoder stops here.
        auto self = hasRoom ? weakSelf.lock() : nullptr;
        if (!self || self->status_.load() == kCancelled) {
            job.reader->cancelReading();
            break;
        }
        std::shared_ptr<FLKVideoFrame> frame;
        {
            FLKStageTimes::CpuScope decoding(FLKStageTimes::kDecode);
            frame = job.reader->copyNextSampleBuffer();
        }
        if (!frame) break;
        decodedTime = frame->presentationTime();
        const float timeStamp = static_cast<float>(frame->presentationTime());
        self->addFrame(frame, job.generation);
        if (!(job.target > timeStamp)) break;
    }
    if (auto self = weakSelf.lock()) {
        self->finishBuffering(job);
        self->notifyProgress();
    }
    if (job.block) job.block();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
    flk::log("Done Reading to %f in %fs", job.target, elapsed.count());
}

void FLKVideoBufferSampleReader::finishBuffering(const BufferingJob& job) {
    std::lock_guard lock(mutex_);
    if (job.generation != generation_) return;
    isBuffering_.store(false);
    switch (job.reader->status()) {
        // A segment that cannot be decoded is over too: it holds no frames.
        case FLKAssetReaderStatus::Completed:
        case FLKAssetReaderStatus::Failed: status_.store(kFinished); break;
        case FLKAssetReaderStatus::Reading: status_.store(kIdle); break;
        default: break;
    }
}

void FLKVideoBufferSampleReader::addFrame(const std::shared_ptr<FLKVideoFrame>& frame, uint64_t generation) {
    if (!frame->isNV12()) return;
    if (!hasColorimetry_.load()) {
        colorMatrix_.store(frame->colorMatrix());
        colorRange_.store(frame->colorRange());
        hasColorimetry_.store(true);
    }
    auto texture = std::make_shared<FLKBiplanarTexture>(nv12FrameWithFrame(frame),
                                                        static_cast<float>(frame->presentationTime()));
    {
        std::lock_guard lock(mutex_);
        if (generation != generation_) return;
        if (!textureBuffer_) textureBuffer_ = std::make_shared<FLKTextureBuffer>(kRingSize);
        textureBuffer_->addTexture(std::move(texture));
        releaseShownFramesLocked();
    }
    notifyProgress();
}

void FLKVideoBufferSampleReader::setProgressSignal(std::shared_ptr<FLKProgressSignal> signal) {
    std::lock_guard lock(mutex_);
    progressSignal_ = std::move(signal);
}

void FLKVideoBufferSampleReader::notifyProgress() const {
    std::shared_ptr<FLKProgressSignal> signal;
    {
        std::lock_guard lock(mutex_);
        signal = progressSignal_;
    }
    if (signal) signal->notify();
}

void FLKVideoBufferSampleReader::releaseShownFramesLocked() const {
    if (!textureBuffer_) return;
    // The frame answering the earliest recent lookup stays, however far back
    // it lies: a still screen sends no frames for a while.
    auto kept = textureBuffer_->textureShownAtTime(decodeWindow_->releasableBefore(), kTimeTolerance).texture;
    if (kept) textureBuffer_->removeTexturesBefore(kept->sampleTimeStamp());
}

void FLKVideoBufferSampleReader::cancelReading() {
    stopReading();
    notifyProgress();
}

void FLKVideoBufferSampleReader::stopReading() {
    std::shared_ptr<FLKDispatchQueue> queue;
    std::lock_guard lock(mutex_);
    status_.store(kCancelled);
    // The running job, if any, stops at its next frame and lets go of the queue.
    if (assetReader_) assetReader_->cancelReading();
    decodeWindow_->interrupt();
    queue = std::move(bufferingQueue_);
    bufferingQueue_.reset();
    if (queue && isBuffering_.load()) {
        // Released on its own worker once the job ends, so the main thread never waits for it.
        queue->async([queue] {});
    }
}

void FLKVideoBufferSampleReader::reset() {
    bool dropped = false;
    {
        std::lock_guard lock(mutex_);
        if (!assetReader_ || assetReader_->status() != FLKAssetReaderStatus::Reading) {
            ++generation_;
            status_.store(kIdle);
            textureBuffer_.reset();
            assetReader_.reset();
            bufferingQueue_.reset();
            isBuffering_.store(false);
            decodeWindow_->interrupt();
            dropped = true;
        }
    }
    if (dropped) {
        forgetUploads();
        notifyProgress();
    } else {
        cancelReading();
    }
}

std::shared_ptr<FLKAssetReader> FLKVideoBufferSampleReader::assetReaderLocked() {
    if (assetReader_) return assetReader_;
    assetReader_ = std::make_shared<FLKAssetReader>(asset_, readRange_.start, readRange_.end);
    // A play-through keeps two segments' decoders open at once, and its other
    // stages keep every core busy: frame threads would only hold more frames.
    assetReader_->setSingleThreaded(decodeWindow_->aheadTime() != FLKDecodeWindow::kUnlimited);
    return assetReader_;
}

std::shared_ptr<FLKDispatchQueue> FLKVideoBufferSampleReader::bufferingQueueLocked() {
    if (!bufferingQueue_) {
        bufferingQueue_ = FLKDispatchQueue::make("org.flickwell.Flickwell.FLKVideoBufferSampleReader.bufferingQueue");
    }
    return bufferingQueue_;
}

std::shared_ptr<FLKTexture> FLKVideoBufferSampleReader::sampleTextureAtMediaTime(double mediaTime, bool shown) const {
    decodeWindow_->noteLookup(mediaTime, shown);
    std::lock_guard lock(mutex_);
    if (shown) releaseShownFramesLocked();
    if (!textureBuffer_ || !readRange_.containsTime(mediaTime)) return nullptr;
    const auto found = textureBuffer_->textureShownAtTime(mediaTime, kTimeTolerance);
    // While the segment is being decoded, a frame still to come may be the one shown.
    return found.isFollowed || status_.load() == kFinished ? found.texture : nullptr;
}

std::shared_ptr<FLKTexture> FLKVideoBufferSampleReader::sampleTextureForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double t, bool shown) const {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    return videoClip ? sampleTextureAtMediaTime(videoClip->clipTimeForTimelineTime(t), shown) : nullptr;
}

bool FLKVideoBufferSampleReader::hasTextureForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    return sampleTextureForClip(clip, t) != nullptr;
}

std::shared_ptr<FLKGPUTexture> FLKVideoBufferSampleReader::textureForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    return frameTexture(clip, t, false);
}

std::shared_ptr<FLKGPUTexture> FLKVideoBufferSampleReader::displayTextureForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    const FLKContext* context = FLKContext::current();
    return frameTexture(clip, t, context && context->drawsVideoPlanes());
}

std::shared_ptr<FLKGPUTexture> FLKVideoBufferSampleReader::frameTexture(const std::shared_ptr<FLKTimelineClip>& clip,
                                                                        double t, bool planes) {
    auto sample = sampleTextureForClip(clip, t, true);
    auto imageFilter = filter();
    if (imageFilter && !sample) {
        std::lock_guard lock(lookupMutex_);
        imageFilter->setProvider(nullptr);
    }
    // A missing frame answers nothing rather than the filter's last output.
    if (!sample) return nullptr;
    FLKStageTimes::CpuScope uploading(FLKStageTimes::kUpload);
    std::lock_guard lock(lookupMutex_);
    // Uploaded here on the render thread, where older uploads are dropped too.
    if (!sample->texture()) {
        sample->refreshTexture();
        rememberUploadLocked(sample);
    }
    if (planes) {
        auto luma = sample->texture();
        if (luma && hasColorimetry_.load()) luma->setColorimetry(colorMatrix_.load(), colorRange_.load());
        return luma;
    }
    if (!imageFilter) return sample->texture();

    if (auto converter = std::dynamic_pointer_cast<FLKBiplanarConverterFilter>(imageFilter);
        converter && hasColorimetry_.load()) {
        converter->setColorimetry(colorMatrix_.load(), colorRange_.load());
    }
    if (imageFilter->provider() != sample) imageFilter->setProvider(sample);
    return imageFilter->texture();
}

void FLKVideoBufferSampleReader::rememberUploadLocked(const std::shared_ptr<FLKTexture>& sample) {
    uploaded_.push_back(sample);
    if (uploaded_.size() <= kUploadedFrames) return;
    uploaded_.front()->releaseTexture();
    uploaded_.pop_front();
}

void FLKVideoBufferSampleReader::forgetUploads() {
    std::lock_guard lock(lookupMutex_);
    uploaded_.clear();
}

size_t FLKVideoBufferSampleReader::numberOfBufferedFrames() const {
    std::lock_guard lock(mutex_);
    return textureBuffer_ ? textureBuffer_->ring().size() : 0;
}

std::shared_ptr<FLKImageFilter> FLKVideoBufferSampleReader::filter() const {
    std::lock_guard lock(mutex_);
    return filter_;
}

void FLKVideoBufferSampleReader::setFilter(std::shared_ptr<FLKImageFilter> filter) {
    std::lock_guard lock(mutex_);
    filter_ = std::move(filter);
}

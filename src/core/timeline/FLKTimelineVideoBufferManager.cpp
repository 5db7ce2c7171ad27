#include "core/timeline/FLKTimelineVideoBufferManager.h"

#include <algorithm>
#include <cmath>

#include "core/gpu/FLKBiplanarConverterFilter.h"
#include "core/timeline/FLKTimelineTransitionBufferManager.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"

FLKTimelineVideoBufferManager::FLKTimelineVideoBufferManager(const FLKTimelineVideoTrackClipSource& clipSource)
    : clipSource_(clipSource) {}

void FLKTimelineVideoBufferManager::installAsTrackBufferManagers() {
    FLKTimelineVideoTrack::setBufferManagersFactory([](FLKTimelineVideoTrack& track) {
        auto video = std::make_shared<FLKTimelineVideoBufferManager>(track);
        auto transition = std::make_shared<FLKTimelineTransitionBufferManager>(video, track);
        return FLKTimelineVideoTrack::BufferManagers{video, transition};
    });
}

void FLKTimelineVideoBufferManager::createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    if (!videoClip || hasBuffersForAsset(videoClip->assetURL())) return;

    const auto& asset = videoClip->asset();
    const double duration = asset ? asset->duration() : 0;
    const double width = bufferWidth();
    const auto count = static_cast<int32_t>(std::ceil(static_cast<float>(duration / width)));
    const double aheadTime = decodeAheadTime();
    std::shared_ptr<FLKProgressSignal> signal;
    {
        std::lock_guard lock(mutex_);
        signal = progressSignal_;
    }
    Readers readers;
    double start = 0;
    for (int32_t k = 0; k < count; ++k) {
        const double end = start + std::min(width, duration - start);
        auto reader = std::make_shared<FLKVideoBufferSampleReader>(asset, FLKTimeRange{start, end});
        // Made without the lock: building the kernel takes the GL context,
        // which a render thread may hold while it looks a reader up.
        reader->setFilter(FLKBiplanarConverterFilter::filter());
        reader->setDecodeAheadTime(aheadTime);
        reader->setProgressSignal(signal);
        readers.push_back(std::move(reader));
        start += width;
    }
    std::lock_guard lock(mutex_);
    assetBuffers_.try_emplace(videoClip->assetURL(), std::move(readers));
}

void FLKTimelineVideoBufferManager::removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    if (!videoClip || clip->type() != FLKTimelineClip::kVideo) return;
    if (referenceCountForAsset(videoClip->assetURL()) != 0) return;
    std::lock_guard lock(mutex_);
    auto it = assetBuffers_.find(videoClip->assetURL());
    if (it == assetBuffers_.end()) return;
    for (const auto& reader : it->second) reader->cancelReading();
    assetBuffers_.erase(it);
}

void FLKTimelineVideoBufferManager::removeAllBuffers() {
    std::map<std::filesystem::path, Readers> dropped;
    {
        std::lock_guard lock(mutex_);
        dropped.swap(assetBuffers_);
        backBuffers_.clear();
        currentBuffer_.reset();
        recentlyRequested_.clear();
        latestRequestTimes_.clear();
    }
    // A job still decoding holds its reader until it notices the cancel.
    for (const auto& [url, readers] : dropped) {
        for (const auto& reader : readers) reader->cancelReading();
    }
}

const FLKTimelineVideoBufferManager::Readers* FLKTimelineVideoBufferManager::readersLocked(
    const std::shared_ptr<FLKVideoClip>& clip) const {
    auto it = assetBuffers_.find(clip->assetURL());
    return it == assetBuffers_.end() ? nullptr : &it->second;
}

std::shared_ptr<FLKVideoSampleReader> FLKTimelineVideoBufferManager::bufferForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    if (!videoClip || clip->type() != FLKTimelineClip::kVideo) return nullptr;
    const double mediaTime = videoClip->clipTimeForTimelineTime(t);
    std::lock_guard lock(mutex_);
    const Readers* readers = readersLocked(videoClip);
    if (!readers) return nullptr;
    // At a seam between two segments the earlier one answers.
    for (const auto& reader : *readers) {
        if (reader->readRange().containsTime(mediaTime)) return reader;
    }
    return nullptr;
}

FLKTimeRange FLKTimelineVideoBufferManager::readTriggerTimeRangeForRange(FLKTimeRange range) const {
    const double margin = bufferingMarginTime();
    return {range.start - margin, range.end + margin};
}

std::shared_ptr<FLKVideoBufferSampleReader> FLKTimelineVideoBufferManager::readableBufferLocked(
    const std::shared_ptr<FLKVideoClip>& clip, double t) const {
    const Readers* readers = readersLocked(clip);
    if (!readers) return nullptr;
    const double mediaTime = clip->clipTimeForTimelineTime(t);
    auto isIdle = [](const auto& reader) { return reader->status() == FLKVideoSampleReader::kIdle; };
    // The segment holding the time comes first: after a jump the segments
    // around the time are idle too, and reading one of them instead would
    // leave the play head's own segment unread.
    for (const auto& reader : *readers) {
        if (reader->readRange().containsTime(mediaTime)) {
            if (isIdle(reader)) return reader;
            break;
        }
    }
    for (const auto& reader : *readers) {
        const FLKTimeRange range = reader->readRange();
        const FLKTimeRange trigger{range.start - bufferingMarginTime_, range.end + bufferingMarginTime_};
        if (isIdle(reader) && trigger.containsTime(mediaTime)) return reader;
    }
    return nullptr;
}

std::shared_ptr<FLKVideoBufferSampleReader> FLKTimelineVideoBufferManager::readableBufferForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double t) const {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    if (!videoClip) return nullptr;
    std::lock_guard lock(mutex_);
    return readableBufferLocked(videoClip, t);
}

void FLKTimelineVideoBufferManager::startBufferingForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    if (!videoClip) return;
    std::lock_guard lock(mutex_);
    rememberRequestLocked(videoClip, t);
    resetCancelledBuffersLocked(videoClip, t);
    auto reader = readableBufferLocked(videoClip, t);
    if (!reader) return;
    if (currentBuffer_) {
        backBuffers_.push_back(currentBuffer_);
        resetFirstBackBufferIfNecessaryLocked();
    }
    reader->readWithFinishedBlock();
    currentBuffer_ = std::move(reader);
}

void FLKTimelineVideoBufferManager::resetCancelledBuffersLocked(const std::shared_ptr<FLKVideoClip>& clip, double t) {
    const Readers* readers = readersLocked(clip);
    if (!readers) return;
    const double mediaTime = clip->clipTimeForTimelineTime(t);
    for (const auto& reader : *readers) {
        const FLKTimeRange range = reader->readRange();
        const FLKTimeRange trigger{range.start - bufferingMarginTime_, range.end + bufferingMarginTime_};
        // Resetting a back buffer that was still reading only cancels it; once
        // its job has ended it can be reset for real and read again.
        if (reader->status() == FLKVideoSampleReader::kCancelled && !reader->isBuffering() &&
            trigger.containsTime(mediaTime)) {
            reader->reset();
        }
    }
}

void FLKTimelineVideoBufferManager::rememberRequestLocked(const std::shared_ptr<FLKVideoClip>& clip, double t) {
    const Readers* readers = readersLocked(clip);
    if (!readers) return;
    const double mediaTime = clip->clipTimeForTimelineTime(t);
    latestRequestTimes_[clip->assetURL()] = mediaTime;
    for (const auto& reader : *readers) {
        if (!reader->readRange().containsTime(mediaTime)) continue;
        recentlyRequested_.push_back(reader);
        if (recentlyRequested_.size() > kRememberedRequests) recentlyRequested_.pop_front();
        return;
    }
}

void FLKTimelineVideoBufferManager::resetFirstBackBufferIfNecessaryLocked() {
    if (backBuffers_.size() <= maxBackBuffers_) return;
    // Around a transition one time update asks for up to four segments (two
    // clips, now and a margin ahead); resetting one of those would make every
    // update read it again and drop another. Such a segment waits its turn.
    auto isRecentlyRequested = [&](const std::shared_ptr<FLKVideoBufferSampleReader>& reader) {
        return std::find(recentlyRequested_.begin(), recentlyRequested_.end(), reader) != recentlyRequested_.end() ||
               isReadAheadForLatestRequestLocked(reader);
    };
    auto oldest = std::find_if_not(backBuffers_.begin(), backBuffers_.end(), isRecentlyRequested);
    if (oldest == backBuffers_.end()) return;
    (*oldest)->reset();
    backBuffers_.erase(oldest);
}

// A segment read ahead of its asset's latest request: the play head is on its
// way there, and the readiness check already looks into it.
bool FLKTimelineVideoBufferManager::isReadAheadForLatestRequestLocked(
    const std::shared_ptr<FLKVideoBufferSampleReader>& reader) const {
    for (const auto& [url, readers] : assetBuffers_) {
        if (std::find(readers.begin(), readers.end(), reader) == readers.end()) continue;
        auto latest = latestRequestTimes_.find(url);
        if (latest == latestRequestTimes_.end()) return false;
        const FLKTimeRange range = reader->readRange();
        return latest->second < range.start &&
               FLKTimeRange{range.start - bufferingMarginTime_, range.end + bufferingMarginTime_}.containsTime(latest->second);
    }
    return false;
}

FLKTimelineVideoBufferManager::Readers FLKTimelineVideoBufferManager::buffersForClip(
    const std::shared_ptr<FLKTimelineClip>& clip) const {
    auto videoClip = std::dynamic_pointer_cast<FLKVideoClip>(clip);
    if (!videoClip) return {};
    std::lock_guard lock(mutex_);
    const Readers* readers = readersLocked(videoClip);
    return readers ? *readers : Readers{};
}

uint64_t FLKTimelineVideoBufferManager::referenceCountForAsset(const std::filesystem::path& assetURL) const {
    return clipSource_.numberOfClipsForAsset(assetURL);
}

bool FLKTimelineVideoBufferManager::hasBuffersForAsset(const std::filesystem::path& assetURL) const {
    std::lock_guard lock(mutex_);
    return assetBuffers_.count(assetURL) != 0;
}

std::shared_ptr<FLKVideoBufferSampleReader> FLKTimelineVideoBufferManager::currentBuffer() const {
    std::lock_guard lock(mutex_);
    return currentBuffer_;
}

FLKTimelineVideoBufferManager::Readers FLKTimelineVideoBufferManager::backBuffers() const {
    std::lock_guard lock(mutex_);
    return backBuffers_;
}

double FLKTimelineVideoBufferManager::bufferWidth() const {
    std::lock_guard lock(mutex_);
    return bufferWidth_;
}

void FLKTimelineVideoBufferManager::setBufferWidth(double seconds) {
    std::lock_guard lock(mutex_);
    bufferWidth_ = seconds;
}

double FLKTimelineVideoBufferManager::bufferingMarginTime() const {
    std::lock_guard lock(mutex_);
    return bufferingMarginTime_;
}

void FLKTimelineVideoBufferManager::setBufferingMarginTime(double seconds) {
    std::lock_guard lock(mutex_);
    bufferingMarginTime_ = seconds;
}

double FLKTimelineVideoBufferManager::decodeAheadTime() const {
    std::lock_guard lock(mutex_);
    return decodeAheadTime_;
}

void FLKTimelineVideoBufferManager::setDecodeAheadTime(double seconds) {
    std::lock_guard lock(mutex_);
    decodeAheadTime_ = seconds;
    for (const auto& [url, readers] : assetBuffers_) {
        for (const auto& reader : readers) reader->setDecodeAheadTime(seconds);
    }
}

void FLKTimelineVideoBufferManager::setProgressSignal(std::shared_ptr<FLKProgressSignal> signal) {
    std::lock_guard lock(mutex_);
    progressSignal_ = signal;
    for (const auto& [url, readers] : assetBuffers_) {
        for (const auto& reader : readers) reader->setProgressSignal(signal);
    }
}

uint64_t FLKTimelineVideoBufferManager::maxBackBuffers() const {
    std::lock_guard lock(mutex_);
    return maxBackBuffers_;
}

void FLKTimelineVideoBufferManager::setMaxBackBuffers(uint64_t count) {
    std::lock_guard lock(mutex_);
    maxBackBuffers_ = count;
}

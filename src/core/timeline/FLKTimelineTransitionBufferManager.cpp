#include "core/timeline/FLKTimelineTransitionBufferManager.h"

#include "core/timeline/FLKVideoTransitionClip.h"

namespace {
// Transitions are the same clip when they join the same pair.
std::string keyForTransition(const FLKVideoTransitionClip& clip) {
    return clip.fromVideoClipIdentifier() + '\n' + clip.toVideoClipIdentifier();
}
}  // namespace

FLKTimelineTransitionBufferManager::FLKTimelineTransitionBufferManager(
    std::weak_ptr<FLKVideoBufferSource> videoBufferSource, const FLKTimelineClipSource& clipSource)
    : videoBufferSource_(std::move(videoBufferSource)), clipSource_(clipSource) {}

void FLKTimelineTransitionBufferManager::createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    auto transitionClip = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip);
    if (!transitionClip) return;
    auto reader = std::make_shared<FLKVideoTransitionBufferSampleReader>(transitionClip);
    reader->setBufferSource(videoBufferSource_);
    reader->setClipSource(&clipSource_);
    std::lock_guard lock(mutex_);
    transitionBuffers_[keyForTransition(*transitionClip)] = std::move(reader);
}

void FLKTimelineTransitionBufferManager::removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    auto transitionClip = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip);
    if (!transitionClip) return;
    std::lock_guard lock(mutex_);
    transitionBuffers_.erase(keyForTransition(*transitionClip));
}

std::shared_ptr<FLKVideoSampleReader> FLKTimelineTransitionBufferManager::bufferForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double /*t*/) {
    auto transitionClip = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip);
    if (!transitionClip) return nullptr;
    std::lock_guard lock(mutex_);
    auto it = transitionBuffers_.find(keyForTransition(*transitionClip));
    return it == transitionBuffers_.end() ? nullptr : it->second;
}

void FLKTimelineTransitionBufferManager::startBufferingForClip(const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    auto transitionClip = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip);
    auto videoBufferSource = videoBufferSource_.lock();
    if (!transitionClip || !videoBufferSource) return;
    for (const auto& identifier : {transitionClip->fromVideoClipIdentifier(), transitionClip->toVideoClipIdentifier()}) {
        if (auto joined = clipSource_.clipWithIdentifier(identifier)) videoBufferSource->startBufferingForClip(joined, t);
    }
}

void FLKTimelineTransitionBufferManager::setBufferWidth(double seconds) {
    std::lock_guard lock(mutex_);
    bufferWidth_ = seconds;
}

void FLKTimelineTransitionBufferManager::setBufferingMarginTime(double seconds) {
    std::lock_guard lock(mutex_);
    bufferingMarginTime_ = seconds;
}

#include "core/timeline/FLKVideoTransitionBufferSampleReader.h"

#include "core/gpu/FLKTransition.h"

FLKVideoTransitionBufferSampleReader::FLKVideoTransitionBufferSampleReader(
    std::shared_ptr<FLKVideoTransitionClip> transitionClip)
    : transitionClip_(std::move(transitionClip)),
      fromTextureProvider_(std::make_shared<FLKPlaceholderTextureProvider>()),
      toTextureProvider_(std::make_shared<FLKPlaceholderTextureProvider>()) {}

float FLKVideoTransitionBufferSampleReader::progressAtTime(double t) const {
    return progressOfClipAtTime(*transitionClip_, t);
}

float FLKVideoTransitionBufferSampleReader::progressOfClipAtTime(const FLKVideoTransitionClip& clip, double t) {
    return static_cast<float>(1.0 - (clip.timeRange().end - t) / clip.duration());
}

bool FLKVideoTransitionBufferSampleReader::resolve(double t, Sources* sources) const {
    std::shared_ptr<FLKVideoBufferSource> bufferSource;
    const FLKTimelineClipSource* clipSource;
    {
        std::lock_guard lock(mutex_);
        bufferSource = bufferSource_.lock();
        clipSource = clipSource_;
    }
    if (!bufferSource || !clipSource) return false;
    sources->fromClip = clipSource->clipWithIdentifier(transitionClip_->fromVideoClipIdentifier());
    sources->toClip = clipSource->clipWithIdentifier(transitionClip_->toVideoClipIdentifier());
    if (sources->fromClip) sources->fromReader = bufferSource->bufferForClip(sources->fromClip, t);
    if (sources->toClip) sources->toReader = bufferSource->bufferForClip(sources->toClip, t);
    return sources->fromReader && sources->toReader;
}

std::shared_ptr<FLKGPUTexture> FLKVideoTransitionBufferSampleReader::textureForClip(
    const std::shared_ptr<FLKTimelineClip>& clip, double t) {
    // A moved transition is the same clip to the track, which then keeps this
    // reader: the clip asked about carries the current time range.
    auto current = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip);
    const float progress = progressOfClipAtTime(current ? *current : *transitionClip_, t);
    if (progress < 0 || progress > 1) return nullptr;
    Sources sources;
    resolve(t, &sources);
    std::lock_guard lock(mixMutex_);
    fromTextureProvider_->setTexture(sources.fromReader ? sources.fromReader->textureForClip(sources.fromClip, t)
                                                        : nullptr);
    toTextureProvider_->setTexture(sources.toReader ? sources.toReader->textureForClip(sources.toClip, t) : nullptr);
    if (!fromTextureProvider_->texture() || !toTextureProvider_->texture()) return nullptr;

    auto transition = std::dynamic_pointer_cast<FLKTransition>(transitionClip_->transition());
    if (!transition) return nullptr;
    transition->setProvider(fromTextureProvider_);
    transition->setToProvider(toTextureProvider_);
    transition->setProgress(progress);
    // The placeholders keep their objects while their textures change.
    transition->setDirty();
    return transition->texture();
}

bool FLKVideoTransitionBufferSampleReader::hasTextureForClip(const std::shared_ptr<FLKTimelineClip>& /*clip*/,
                                                             double t) {
    Sources sources;
    if (!resolve(t, &sources)) return false;
    return sources.fromReader->hasTextureForClip(sources.fromClip, t) &&
           sources.toReader->hasTextureForClip(sources.toClip, t);
}

void FLKVideoTransitionBufferSampleReader::setBufferSource(std::weak_ptr<FLKVideoBufferSource> source) {
    std::lock_guard lock(mutex_);
    bufferSource_ = std::move(source);
}

void FLKVideoTransitionBufferSampleReader::setClipSource(const FLKTimelineClipSource* source) {
    std::lock_guard lock(mutex_);
    clipSource_ = source;
}

std::shared_ptr<FLKImageFilter> FLKVideoTransitionBufferSampleReader::filter() const {
    std::lock_guard lock(mutex_);
    return filter_;
}

void FLKVideoTransitionBufferSampleReader::setFilter(std::shared_ptr<FLKImageFilter> filter) {
    std::lock_guard lock(mutex_);
    filter_ = std::move(filter);
}

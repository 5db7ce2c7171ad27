#include "core/scene/FLKTimelineVideoSprite.h"

FLK_REGISTER_SERIALIZABLE(FLKTimelineVideoSprite);

std::shared_ptr<FLKTimelineVideoSprite> FLKTimelineVideoSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKTimelineVideoSprite>(dictionary);
}

std::shared_ptr<FLKTextureProvider> FLKTimelineVideoSprite::provider() const {
    std::lock_guard lock(providerMutex_);
    return provider_.lock();
}

void FLKTimelineVideoSprite::setProvider(const std::shared_ptr<FLKTextureProvider>& provider) {
    std::lock_guard lock(providerMutex_);
    provider_ = provider;
}

std::shared_ptr<FLKGPUTexture> FLKTimelineVideoSprite::texture() const {
    auto current = provider();
    return current ? current->texture() : nullptr;
}

void FLKTimelineVideoSprite::updateFrame(FLKSize) {
    if (auto current = provider()) current->refreshTexture();
}

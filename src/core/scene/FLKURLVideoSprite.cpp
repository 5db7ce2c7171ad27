#include "core/scene/FLKURLVideoSprite.h"

#include "core/scene/FLKPlane.h"

FLK_REGISTER_SERIALIZABLE(FLKURLVideoSprite);

FLKURLVideoSprite::FLKURLVideoSprite(const std::filesystem::path& videoURL) {
    setResourceURL(videoURL);
    setShape(FLKPlane::planeWithFrame(FLKRect::zero()));
}

std::shared_ptr<FLKURLVideoSprite> FLKURLVideoSprite::spriteWithResourceURL(const std::filesystem::path& url) {
    return std::make_shared<FLKURLVideoSprite>(url);
}

std::shared_ptr<FLKURLVideoSprite> FLKURLVideoSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKURLVideoSprite>(dictionary);
}

void FLKURLVideoSprite::initWithDictionary(const FLKJSON& dictionary) {
    FLKVideoSprite::initWithDictionary(dictionary);
    auto loop = dictionary.find("shouldLoop");
    if (loop != dictionary.end() && loop->is_boolean()) setShouldLoop(loop->get<bool>());
}

void FLKURLVideoSprite::loadResource(const std::filesystem::path& url) { setResourceURL(url); }

FLKJSON FLKURLVideoSprite::serialized() const {
    auto dictionary = FLKVideoSprite::serialized();
    dictionary["shouldLoop"] = shouldLoop_;
    return dictionary;
}

void FLKURLVideoSprite::setResourceURL(std::optional<std::filesystem::path> url) {
    FLKVideoSprite::setResourceURL(std::move(url));
    createTextureProvider();
}

void FLKURLVideoSprite::createTextureProvider() {
    textureProvider_ = resourceURL() ? FLKVideoFileTextureProvider::providerForURL(*resourceURL()) : nullptr;
    if (textureProvider_) textureProvider_->setShouldLoop(shouldLoop_);
    setProvider(textureProvider_);
}

std::shared_ptr<FLKTextureProvider> FLKURLVideoSprite::provider() const {
    std::lock_guard lock(providerMutex_);
    return provider_.lock();
}

void FLKURLVideoSprite::setProvider(const std::shared_ptr<FLKTextureProvider>& provider) {
    std::lock_guard lock(providerMutex_);
    provider_ = provider;
}

std::shared_ptr<FLKGPUTexture> FLKURLVideoSprite::texture() const {
    return textureProvider_ ? textureProvider_->texture() : nullptr;
}

void FLKURLVideoSprite::updateFrame(FLKSize) {
    if (textureProvider_) textureProvider_->refreshTexture();
}

void FLKURLVideoSprite::setShouldLoop(bool shouldLoop) {
    shouldLoop_ = shouldLoop;
    if (textureProvider_) textureProvider_->setShouldLoop(shouldLoop);
}

void FLKURLVideoSprite::play() {
    if (textureProvider_) textureProvider_->play();
}

void FLKURLVideoSprite::pause() {
    if (textureProvider_) textureProvider_->pause();
}

void FLKURLVideoSprite::stop() {
    if (textureProvider_) textureProvider_->stop();
}

void FLKURLVideoSprite::setCurrentTime(double seconds) {
    if (textureProvider_) textureProvider_->setCurrentTime(seconds);
}

double FLKURLVideoSprite::currentTime() const { return textureProvider_ ? textureProvider_->currentTime() : 0; }

bool FLKURLVideoSprite::hasAudio() const { return textureProvider_ && textureProvider_->hasAudio(); }

bool FLKURLVideoSprite::isPlaying() const { return textureProvider_ && textureProvider_->isPlaying(); }

double FLKURLVideoSprite::duration() const { return textureProvider_ ? textureProvider_->duration() : 0; }

double FLKURLVideoSprite::fps() const { return textureProvider_ ? textureProvider_->fps() : 0; }

FLKSize FLKURLVideoSprite::videoSize() const { return textureProvider_ ? textureProvider_->videoSize() : FLKSize{}; }

int64_t FLKURLVideoSprite::numFrames() const { return textureProvider_ ? textureProvider_->numFrames() : 0; }

FLKObject::Ptr FLKURLVideoSprite::copy() const {
    auto sprite = std::static_pointer_cast<FLKURLVideoSprite>(FLKVideoSprite::copy());
    sprite->setShouldLoop(shouldLoop_);
    sprite->setResourceURL(resourceURL());
    sprite->setMaskTexture(maskTexture());
    return sprite;
}

bool FLKURLVideoSprite::isEqual(const FLKObject& other) const {
    return FLKVideoSprite::isEqual(other) && shouldLoop_ == static_cast<const FLKURLVideoSprite&>(other).shouldLoop_;
}

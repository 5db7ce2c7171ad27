#include "core/scene/FLKVideoSprite.h"

FLK_REGISTER_SERIALIZABLE(FLKVideoSprite);

std::shared_ptr<FLKVideoSprite> FLKVideoSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKVideoSprite>(dictionary);
}

void FLKVideoSprite::initWithDictionary(const FLKJSON& dictionary) {
    FLKTexturedSprite::initWithDictionary(dictionary);
    auto orientation = dictionary.find("videoOrientation");
    if (orientation != dictionary.end() && orientation->is_number_integer() && orientation->get<int64_t>() >= 0) {
        setVideoOrientation(static_cast<unsigned>(orientation->get<int64_t>()));
    }
}

FLKJSON FLKVideoSprite::serialized() const {
    auto dictionary = FLKTexturedSprite::serialized();
    dictionary["videoOrientation"] = videoOrientation();
    return dictionary;
}

void FLKVideoSprite::setShape(const std::shared_ptr<FLKShape>& shape) {
    FLKTexturedSprite::setShape(shape);
    respondToGeometryChange();
}

void FLKVideoSprite::respondToGeometryChange() {
    calculateOrientedPlaneWithPlane(plane());
    resetBuffers();
}

void FLKVideoSprite::calculateOrientedPlaneWithPlane(const std::shared_ptr<FLKPlane>& plane) {
    std::lock_guard lock(videoMutex_);
    if (videoOrientation_ == 0) return;
    orientedPlane_ = plane ? plane->planeWithOrientation(static_cast<int>(videoOrientation_)) : nullptr;
}

std::shared_ptr<FLKPlane> FLKVideoSprite::orientedPlane() const {
    std::lock_guard lock(videoMutex_);
    return orientedPlane_;
}

unsigned FLKVideoSprite::videoOrientation() const {
    std::lock_guard lock(videoMutex_);
    return videoOrientation_;
}

void FLKVideoSprite::setVideoOrientation(unsigned orientation) {
    {
        std::lock_guard lock(videoMutex_);
        if (orientation == videoOrientation_) return;
        videoOrientation_ = orientation;
    }
    if (orientation != 0) respondToGeometryChange();
}

unsigned FLKVideoSprite::videoOrientationForSize(FLKSize size) { return size.width > size.height ? 2 : 1; }

FLKVideoSprite::Clock::time_point FLKVideoSprite::startDate() {
    std::lock_guard lock(videoMutex_);
    if (!startDate_) startDate_ = Clock::now();
    return *startDate_;
}

void FLKVideoSprite::setStartDate(Clock::time_point date) {
    std::lock_guard lock(videoMutex_);
    startDate_ = date;
}

void FLKVideoSprite::updateWithSampleBuffer(const FLKSampleBuffer& sampleBuffer) {
    if (shouldDiscardSampleBuffer(sampleBuffer)) return;
    auto pixels = sampleBuffer.imageBuffer;
    {
        std::lock_guard lock(videoMutex_);
        imageBuffer_ = pixels;
    }
    if (!pixels || pixels->width <= 0 || pixels->height <= 0 || pixels->stride < pixels->width * 4 ||
        pixels->bgra.size() < static_cast<size_t>(pixels->stride) * pixels->height) {
        return;  // no usable frame: the previous texture stays
    }
    // The bytes are copied now and uploaded when the renderer first binds the texture.
    setTexture(std::make_shared<FLKGPUTexture>(pixels->width, pixels->height, pixelFormat(), pixels->bgra,
                                               pixels->stride, pixels->width, pixels->height));
}

std::shared_ptr<const FLKPixelBuffer> FLKVideoSprite::imageBuffer() const {
    std::lock_guard lock(videoMutex_);
    return imageBuffer_;
}

FLKObject::Ptr FLKVideoSprite::copy() const {
    auto sprite = std::static_pointer_cast<FLKVideoSprite>(FLKTexturedSprite::copy());
    sprite->setVideoOrientation(videoOrientation());
    return sprite;
}

bool FLKVideoSprite::isEqual(const FLKObject& other) const {
    return FLKTexturedSprite::isEqual(other) &&
           videoOrientation() == static_cast<const FLKVideoSprite&>(other).videoOrientation();
}

#include "core/scene/FLKCamera.h"

#include <bit>
#include <cstdint>

FLK_REGISTER_SERIALIZABLE(FLKCamera);

FLKCamera::FLKCamera() { updateUniforms(); }

std::shared_ptr<FLKCamera> FLKCamera::cameraWithFrame(const FLKRect& frame) {
    auto camera = std::make_shared<FLKCamera>();
    camera->setFrame(frame);
    return camera;
}

std::shared_ptr<FLKCamera> FLKCamera::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKCamera>(dictionary);
}

void FLKCamera::initWithDictionary(const FLKJSON& dictionary) {
    FLKObject::initWithDictionary(dictionary);
    auto frame = dictionary.find("frame");
    if (frame != dictionary.end()) {
        if (auto rect = FLKRect::fromDictionary(*frame)) setFrame(*rect);
    }
}

FLKJSON FLKCamera::serialized() const {
    auto dictionary = FLKObject::serialized();
    dictionary["frame"] = frame_.dictionaryRepresentation();
    return dictionary;
}

void FLKCamera::setFrame(const FLKRect& frame) {
    frame_ = frame;
    updateUniforms();
}

void FLKCamera::setViewport(const FLKRect& viewport) {
    viewport_ = viewport;
    updateUniforms();
}

void FLKCamera::setViewportSize(FLKSize size, bool /*byOffsetingContent*/) {
    setViewport(FLKRect({0, 0}, size));
    // Re-derives the frame size from the new viewport at the current scale.
    scaleBy(0, {0, 0});
}

void FLKCamera::focus(const std::shared_ptr<FLKShape>& shape) {
    setFrame(viewport_);
    FLKSize shapeSize = shape ? shape->bounds().size : FLKSize{};
    // No shape divides by zero, which the clamp turns into the largest scale.
    setScale(viewport_.size.height / shapeSize.height, {0, 0});
    FLKPoint origin{(shapeSize.width - frame_.size.width) * 0.5, (shapeSize.height - frame_.size.height) * 0.5};
    setFrame(FLKRect(origin, frame_.size));
}

void FLKCamera::setScale(double scale) { setScale(scale, center()); }

void FLKCamera::setScale(double scale, FLKPoint referencePoint) {
    scale_ = scale;
    if (minScale_ > scale_) {
        scale_ = minScale_;
    } else if (scale_ > maxScale_) {
        scale_ = maxScale_;
    }
    FLKSize context = contextSize();
    FLKPoint fraction{referencePoint.x / context.width, referencePoint.y / context.height};
    FLKSize newSize{context.width / scale_, context.height / scale_};
    FLKPoint origin{frame_.origin.x + (frame_.size.width - newSize.width) * fraction.x,
                    frame_.origin.y + (frame_.size.height - newSize.height) * fraction.y};
    setFrame(FLKRect(origin, newSize));
}

void FLKCamera::moveBy(FLKPoint delta) { setFrame(FLKRect(frame_.origin - delta / scale_, frame_.size)); }

void FLKCamera::moveTo(FLKPoint point) { setFrame(FLKRect(point, frame_.size)); }

void FLKCamera::scaleBy(double delta) { scaleBy(delta, center()); }

void FLKCamera::scaleBy(double delta, FLKPoint referencePoint) { setScale(scale_ + delta, referencePoint); }

FLKPoint FLKCamera::center() const {
    return {frame_.origin.x + frame_.size.width * 0.5, frame_.origin.y + frame_.size.height * 0.5};
}

FLKPoint FLKCamera::screenPointFromScenePoint(FLKPoint scenePoint) const {
    return (scenePoint - frame_.origin) * scale_;
}

FLKPoint FLKCamera::scenePointForScreenPoint(FLKPoint screenPoint) const {
    return screenPoint / scale_ + frame_.origin;
}

FLKRect FLKCamera::sceneRectFromScreenRect(const FLKRect& screenRect) const {
    FLKPoint origin = scenePointForScreenPoint(screenRect.origin);
    FLKPoint farCorner = scenePointForScreenPoint(
        {screenRect.origin.x + screenRect.size.width, screenRect.origin.y + screenRect.size.height});
    return FLKRect(origin, FLKSize{farCorner.x - origin.x, farCorner.y - origin.y});
}

FLKRect FLKCamera::screenRectFromSceneRect(const FLKRect& sceneRect) const {
    FLKPoint origin = screenPointFromScenePoint(sceneRect.origin);
    FLKPoint farCorner = screenPointFromScenePoint(
        {sceneRect.origin.x + sceneRect.size.width, sceneRect.origin.y + sceneRect.size.height});
    return FLKRect(origin, FLKSize{farCorner.x - origin.x, farCorner.y - origin.y});
}

void FLKCamera::updateUniforms() {
    // Orthographic, y down: top = y, bottom = y + h.
    double left = frame_.origin.x;
    double right = frame_.origin.x + frame_.size.width;
    double top = frame_.origin.y;
    double bottom = frame_.origin.y + frame_.size.height;
    Matrix m{};
    m[0] = static_cast<float>(2.0 / (right - left));
    m[5] = static_cast<float>(2.0 / (top - bottom));
    m[10] = 1.0f;
    m[12] = static_cast<float>((left + right) / (left - right));
    m[13] = static_cast<float>((top + bottom) / (bottom - top));
    m[15] = 1.0f;
    std::lock_guard lock(uniformsMutex_);
    uniforms_ = m;
}

FLKCamera::Matrix FLKCamera::uniforms() const {
    std::lock_guard lock(uniformsMutex_);
    return uniforms_;
}

FLKObject::Ptr FLKCamera::copy() const {
    auto camera = std::static_pointer_cast<FLKCamera>(FLKObject::copy());
    camera->scale_ = scale_;
    camera->offset_ = offset_;
    camera->viewport_ = viewport_;
    camera->setFrame(frame_);
    return camera;
}

bool FLKCamera::isEqual(const FLKObject& other) const {
    if (!FLKObject::isEqual(other)) return false;
    return frame_ == static_cast<const FLKCamera&>(other).frame_;
}

size_t FLKCamera::hash() const {
    auto bits = [](double v) { return std::bit_cast<uint64_t>(v); };
    uint64_t sizeBits = (bits(frame_.size.width) << 10) ^ bits(frame_.size.height);
    uint64_t originBits = (bits(frame_.origin.x) << 10) ^ bits(frame_.origin.y);
    return FLKObject::hash() ^ static_cast<size_t>(sizeBits + originBits);
}

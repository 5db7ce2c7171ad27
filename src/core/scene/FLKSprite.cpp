#include "core/scene/FLKSprite.h"

FLK_REGISTER_SERIALIZABLE(FLKSprite);

std::shared_ptr<FLKSprite> FLKSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKSprite>(dictionary);
}

void FLKSprite::initWithDictionary(const FLKJSON& dictionary) {
    FLKObject::initWithDictionary(dictionary);
    auto shape = dictionary.find("shape");
    if (shape != dictionary.end()) {
        if (auto plane = FLKPlane::newWithDictionary(*shape)) setShape(plane);
    }
}

FLKJSON FLKSprite::serialized() const {
    auto dictionary = FLKObject::serialized();
    if (auto shape = plane()) dictionary["shape"] = shape->serialized();
    return dictionary;
}

void FLKSprite::setShape(const std::shared_ptr<FLKShape>& shape) {
    auto copy = shape ? shape->copy() : nullptr;
    std::lock_guard lock(geometryMutex_);
    shape_ = std::move(copy);
    vertexBuffer_.reset();
    indexBuffer_.reset();
    ++geometryGeneration_;
}

std::shared_ptr<FLKPlane> FLKSprite::plane() const {
    std::lock_guard lock(geometryMutex_);
    return shape_;
}

FLKPoint FLKSprite::position() const { return bounds().center(); }

void FLKSprite::setPosition(FLKPoint position) { moveBy(position - this->position()); }

void FLKSprite::moveBy(FLKPoint delta) {
    if (auto shape = plane()) setShape(shape->shapeMovedBy(delta));
}

void FLKSprite::moveTo(FLKPoint point) {
    if (auto shape = plane()) setShape(shape->shapeMovedTo(point));
}

void FLKSprite::scaleBy(double factor) {
    if (auto shape = plane()) setShape(shape->shapeScaledBy(factor));
}

void FLKSprite::scaleBy(double factor, FLKPoint referencePoint) {
    if (auto shape = plane()) setShape(shape->shapeScaledBy(factor, referencePoint));
}

bool FLKSprite::hitTest(FLKPoint point) const {
    auto shape = plane();
    return shape && shape->containsPoint(point);
}

FLKRect FLKSprite::bounds() const {
    auto shape = plane();
    return shape ? shape->bounds() : FLKRect::zero();
}

std::string FLKSprite::pipelineName() const {
    std::lock_guard lock(geometryMutex_);
    return pipelineName_;
}

void FLKSprite::setPipelineName(std::string name) {
    std::lock_guard lock(geometryMutex_);
    pipelineName_ = std::move(name);
}

std::shared_ptr<FLKGPUBuffer> FLKSprite::vertexBuffer() { return cachedVertexBuffer(); }

std::shared_ptr<FLKGPUBuffer> FLKSprite::indexBuffer() { return cachedPlaneBuffer(&FLKSprite::indexBuffer_, false); }

std::shared_ptr<FLKGPUBuffer> FLKSprite::planeVertexBuffer() {
    return cachedPlaneBuffer(&FLKSprite::vertexBuffer_, true);
}

uint64_t FLKSprite::geometryGeneration() const {
    std::lock_guard lock(geometryMutex_);
    return geometryGeneration_;
}

std::shared_ptr<FLKGPUBuffer> FLKSprite::cachedPlaneBuffer(std::shared_ptr<FLKGPUBuffer> FLKSprite::*slot,
                                                           bool vertices) {
    {
        std::lock_guard lock(geometryMutex_);
        if (this->*slot) return this->*slot;
    }
    uint64_t generation = geometryGeneration();
    auto plane = drawnPlane();
    if (!plane || !(vertices ? static_cast<const void*>(plane->vertices()) : plane->indices())) return nullptr;
    auto buffer = vertices ? std::make_shared<FLKGPUBuffer>(plane->vertices(), plane->verticesLength())
                           : std::make_shared<FLKGPUBuffer>(plane->indices(), plane->indicesLength());
    std::lock_guard lock(geometryMutex_);
    if (generation == geometryGeneration_) this->*slot = buffer;
    return buffer;
}

std::shared_ptr<FLKGPUBuffer> FLKSprite::cachedVertexBuffer() const {
    std::lock_guard lock(geometryMutex_);
    return vertexBuffer_;
}

void FLKSprite::setCachedVertexBuffer(std::shared_ptr<FLKGPUBuffer> buffer) {
    std::lock_guard lock(geometryMutex_);
    vertexBuffer_ = std::move(buffer);
}

void FLKSprite::resetBuffers() {
    std::lock_guard lock(geometryMutex_);
    vertexBuffer_.reset();
    indexBuffer_.reset();
    ++geometryGeneration_;
}

FLKObject::Ptr FLKSprite::copy() const {
    auto sprite = std::static_pointer_cast<FLKSprite>(FLKObject::copy());
    sprite->setPipelineName(pipelineName());
    sprite->setShape(plane());
    return sprite;
}

bool FLKSprite::isEqual(const FLKObject& other) const {
    if (!FLKObject::isEqual(other)) return false;
    auto mine = plane();
    auto theirs = static_cast<const FLKSprite&>(other).plane();
    if (!mine || !theirs) return !mine && !theirs;
    return mine->isEqual(*theirs);
}

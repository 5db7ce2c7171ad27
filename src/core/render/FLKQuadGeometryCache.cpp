#include "core/render/FLKQuadGeometryCache.h"

#include "core/render/FLKProjectiveQuad.h"
#include "core/scene/FLKVideoSprite.h"

FLKQuadGeometryCache::FLKQuadGeometryCache()
    : indexBuffer_(std::make_shared<FLKGPUBuffer>(FLKProjectiveQuad::kIndices.data(),
                                                  sizeof(FLKProjectiveQuad::kIndices))) {}

std::shared_ptr<FLKPlane> FLKQuadGeometryCache::drawnPlane(const FLKTexturedSprite& sprite) {
    if (auto video = dynamic_cast<const FLKVideoSprite*>(&sprite)) return video->orientedPlane();
    return sprite.plane();
}

FLKQuadGeometryCache::Geometry FLKQuadGeometryCache::geometryForSprite(
    const std::shared_ptr<FLKTexturedSprite>& sprite) {
    auto plane = drawnPlane(*sprite);
    if (!plane) return {};
    Entry& entry = entries_[sprite.get()];
    if (entry.plane != plane || entry.sprite.lock() != sprite) {
        auto vertices = FLKProjectiveQuad::verticesForPlane(*plane);
        entry.sprite = sprite;
        entry.plane = plane;
        entry.vertexBuffer = vertices ? std::make_shared<FLKGPUBuffer>(vertices->data(), sizeof(*vertices)) : nullptr;
    }
    if (!entry.vertexBuffer) return {};
    return {entry.vertexBuffer, indexBuffer_};
}

void FLKQuadGeometryCache::prune() {
    std::erase_if(entries_, [](const auto& item) { return item.second.sprite.expired(); });
}

#pragma once

#include <memory>
#include <unordered_map>

#include "core/gpu/FLKGPUBuffer.h"
#include "core/scene/FLKTexturedSprite.h"

// The two-triangle vertex buffers of textured sprites, one per sprite, rebuilt
// when the sprite's drawn plane is replaced (planes are values: a new shape is
// a new plane object). Render thread only.
class FLKQuadGeometryCache {
public:
    FLKQuadGeometryCache();

    struct Geometry {
        std::shared_ptr<FLKGPUBuffer> vertexBuffer;
        std::shared_ptr<FLKGPUBuffer> indexBuffer;
    };

    // Null buffers when the sprite's plane cannot be drawn as one projective
    // quad (concave or degenerate): the caller draws its grid instead.
    Geometry geometryForSprite(const std::shared_ptr<FLKTexturedSprite>& sprite);
    // Forgets sprites that are gone.
    void prune();

    // The plane a sprite draws: video sprites draw their oriented plane.
    static std::shared_ptr<FLKPlane> drawnPlane(const FLKTexturedSprite& sprite);

private:
    struct Entry {
        std::weak_ptr<FLKTexturedSprite> sprite;
        std::shared_ptr<FLKPlane> plane;  // keeps the plane's address from being reused
        std::shared_ptr<FLKGPUBuffer> vertexBuffer;
    };
    std::unordered_map<const FLKTexturedSprite*, Entry> entries_;
    std::shared_ptr<FLKGPUBuffer> indexBuffer_;
};

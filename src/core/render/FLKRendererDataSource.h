#pragma once

#include <memory>

#include "core/gpu/FLKGPUTexture.h"
#include "core/platform/FLKSize.h"
#include "core/render/FLKDrawable.h"

class FLKRenderer;

// Where a renderer draws: asked, in this order, for the texture the frame is
// resolved into, the drawable size handed to every node, and what to present.
// Called on the render thread.
class FLKRendererDataSource {
public:
    virtual ~FLKRendererDataSource() = default;
    // A BGRA8 texture; null when there is nothing to draw into yet.
    virtual std::shared_ptr<FLKGPUTexture> textureForRenderer(FLKRenderer& renderer) = 0;
    virtual FLKSize drawableSizeForRenderer(FLKRenderer& renderer) = 0;
    // Null off screen.
    virtual std::shared_ptr<FLKDrawable> drawableForRenderer(FLKRenderer&) { return nullptr; }
};

#pragma once

#include <memory>
#include <string>

#include "core/gpu/FLKGPUBuffer.h"
#include "core/platform/FLKSize.h"

// What the renderer draws: a node asks for its pipeline by name and hands
// over its vertex and 16-bit index buffers. The buffers keep their bytes in
// memory and upload on the render thread when the renderer asks for their GL
// names, so no GL call happens here. A null buffer means nothing to draw.
class FLKRenderable {
public:
    virtual ~FLKRenderable() = default;
    // Called on the render thread before the node is drawn, with the drawable size.
    virtual void updateFrame(FLKSize drawableSize) = 0;
    virtual std::string pipelineName() const = 0;
    virtual std::shared_ptr<FLKGPUBuffer> vertexBuffer() = 0;
    // Unsigned 16-bit triangle indices: the index count is length() / 2.
    virtual std::shared_ptr<FLKGPUBuffer> indexBuffer() = 0;
};

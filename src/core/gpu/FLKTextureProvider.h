#pragma once

#include <memory>

class FLKGPUTexture;

// Something that can hand the renderer a texture. refreshTexture runs on the
// render thread before the texture is used, so lazy uploads happen there.
class FLKTextureProvider {
public:
    virtual ~FLKTextureProvider() = default;
    virtual void refreshTexture() = 0;
    virtual std::shared_ptr<FLKGPUTexture> texture() const = 0;
};

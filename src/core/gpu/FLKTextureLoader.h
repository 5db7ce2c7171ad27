#pragma once

#include <filesystem>
#include <memory>

#include "core/gpu/FLKGPUTexture.h"
#include "core/platform/FLKColor.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKSize.h"

// Pictures to RGBA textures with premultiplied alpha (what the pipelines
// blend). No GL call happens here: textures upload on first use.
class FLKTextureLoader {
public:
    // The shared loader, made once.
    static FLKTextureLoader& textureLoader();

    // Null when the file cannot be read (`error` says why).
    static std::shared_ptr<FLKGPUTexture> texture2DWithImageURL(const std::filesystem::path& url, bool mipmapped = false,
                                                                FLKError* error = nullptr);
    // `image` has straight alpha. Mip levels are never generated.
    static std::shared_ptr<FLKGPUTexture> texture2DWithImage(const FLKImage& image, bool mipmapped = false);
    // A texture of the size (rounded to whole pixels, at least 1) filled with the colour.
    static std::shared_ptr<FLKGPUTexture> textureWithColor(const FLKColor& color, FLKSize size);

private:
    FLKTextureLoader() = default;
};

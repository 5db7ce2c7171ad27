#include "core/gpu/FLKTextureLoader.h"

#include <algorithm>
#include <cmath>

#include "core/media/FLKImageIO.h"

namespace {
uint8_t toByte(double component) {
    double clamped = std::clamp(std::isfinite(component) ? component : 0.0, 0.0, 1.0);
    return static_cast<uint8_t>(std::lround(clamped * 255.0));
}

uint8_t premultiplied(uint8_t c, uint8_t a) { return static_cast<uint8_t>((c * a + 127) / 255); }
}  // namespace

FLKTextureLoader& FLKTextureLoader::textureLoader() {
    static FLKTextureLoader loader;
    return loader;
}

std::shared_ptr<FLKGPUTexture> FLKTextureLoader::texture2DWithImageURL(const std::filesystem::path& url,
                                                                       bool mipmapped, FLKError* error) {
    auto image = flk::readImage(url, error);
    if (!image) return nullptr;
    return texture2DWithImage(*image, mipmapped);
}

std::shared_ptr<FLKGPUTexture> FLKTextureLoader::texture2DWithImage(const FLKImage& image, bool) {
    if (image.isEmpty()) return nullptr;
    std::vector<uint8_t> pixels(image.rgba.size());
    for (size_t i = 0; i + 3 < pixels.size(); i += 4) {
        uint8_t alpha = image.rgba[i + 3];
        for (int c = 0; c < 3; ++c) pixels[i + c] = premultiplied(image.rgba[i + c], alpha);
        pixels[i + 3] = alpha;
    }
    return std::make_shared<FLKGPUTexture>(image.width, image.height, FLKPixelFormat::RGBA8, std::move(pixels));
}

std::shared_ptr<FLKGPUTexture> FLKTextureLoader::textureWithColor(const FLKColor& color, FLKSize size) {
    int width = std::max(1, static_cast<int>(std::lround(std::isfinite(size.width) ? size.width : 1)));
    int height = std::max(1, static_cast<int>(std::lround(std::isfinite(size.height) ? size.height : 1)));
    uint8_t alpha = toByte(color.alpha);
    const uint8_t texel[4] = {premultiplied(toByte(color.red), alpha), premultiplied(toByte(color.green), alpha),
                              premultiplied(toByte(color.blue), alpha), alpha};
    std::vector<uint8_t> pixels(static_cast<size_t>(width) * height * 4);
    for (size_t i = 0; i < pixels.size(); i += 4) std::copy(texel, texel + 4, pixels.begin() + i);
    return std::make_shared<FLKGPUTexture>(width, height, FLKPixelFormat::RGBA8, std::move(pixels));
}

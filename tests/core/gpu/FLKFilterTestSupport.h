#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKTextureProvider.h"

// A provider that hands out one fixed RGBA8 texture.
class FLKFixedTextureProvider : public FLKTextureProvider {
public:
    FLKFixedTextureProvider(int width, int height, std::vector<uint8_t> rgba)
        : texture_(std::make_shared<FLKGPUTexture>(width, height, FLKPixelFormat::RGBA8, std::move(rgba))) {}
    void refreshTexture() override {}
    std::shared_ptr<FLKGPUTexture> texture() const override { return texture_; }

private:
    std::shared_ptr<FLKGPUTexture> texture_;
};

// The largest difference of any byte of two equally long buffers.
inline int maximumDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    if (a.size() != b.size()) return 256;
    int largest = 0;
    for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(int(a[i]) - int(b[i])));
    return largest;
}

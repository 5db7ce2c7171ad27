#pragma once

#include <cstdint>
#include <memory>

// A decoded bi-planar 4:2:0 frame still in CPU memory: a full-size luma plane
// and a half-size plane of interleaved Cb, Cr pairs. `owner` keeps the planes
// alive (for instance a reference to the decoder's frame).
struct FLKNV12Frame {
    int width = 0;
    int height = 0;
    const uint8_t* luma = nullptr;
    int lumaStride = 0;
    const uint8_t* chroma = nullptr;
    int chromaStride = 0;
    std::shared_ptr<const void> owner;

    int chromaWidth() const { return (width + 1) / 2; }
    int chromaHeight() const { return (height + 1) / 2; }
    bool isValid() const { return width > 0 && height > 0 && luma && chroma && owner; }
};

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// A rendered frame as the writers receive it: BGRA, rows top first, `stride`
// bytes a row (exactly width * 4 for frames read back by the renderer).
struct FLKPixelBuffer {
    int width = 0;
    int height = 0;
    int stride = 0;
    std::vector<uint8_t> bgra;

    FLKPixelBuffer() = default;
    FLKPixelBuffer(int w, int h) : width(w), height(h), stride(w * 4), bgra(static_cast<size_t>(w) * h * 4, 0) {}
};

#pragma once

#include <cstdint>
#include <vector>

// Straight (not premultiplied) RGBA, 8 bits a channel, rows top first with no
// padding: byte (y * width + x) * 4.
struct FLKImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgba;

    FLKImage() = default;
    FLKImage(int w, int h) : width(w), height(h), rgba(static_cast<size_t>(w) * h * 4, 0) {}

    bool isEmpty() const { return width <= 0 || height <= 0; }
    uint8_t* pixel(int x, int y) { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
    const uint8_t* pixel(int x, int y) const { return &rgba[(static_cast<size_t>(y) * width + x) * 4]; }
};

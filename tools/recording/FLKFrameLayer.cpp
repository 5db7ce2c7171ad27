#include "FLKFrameLayer.h"

#include <algorithm>
#include <cstring>

namespace {
// Straight RGBA to premultiplied BGRA, one pixel.
inline void premultiply(const uint8_t* rgba, uint8_t* bgra) {
    unsigned a = rgba[3];
    bgra[0] = static_cast<uint8_t>((rgba[2] * a + 127) / 255);
    bgra[1] = static_cast<uint8_t>((rgba[1] * a + 127) / 255);
    bgra[2] = static_cast<uint8_t>((rgba[0] * a + 127) / 255);
    bgra[3] = static_cast<uint8_t>(a);
}
}  // namespace

FLKFrameLayer::FLKFrameLayer(int width, int height)
    : width_(width), height_(height), bgra_(static_cast<size_t>(width) * height * 4, 0) {}

FLKFrameLayer FLKFrameLayer::fromCanvas(const FLKCanvas& canvas) {
    FLKFrameLayer layer(canvas.width(), canvas.height());
    layer.paste(canvas, 0, 0);
    return layer;
}

void FLKFrameLayer::paste(const FLKCanvas& canvas, int x, int y) {
    FLKImage image = canvas.image();
    for (int sy = 0; sy < image.height; ++sy) {
        int dy = y + sy;
        if (dy < 0 || dy >= height_) continue;
        for (int sx = 0; sx < image.width; ++sx) {
            int dx = x + sx;
            if (dx < 0 || dx >= width_) continue;
            premultiply(image.pixel(sx, sy), row(dy) + static_cast<size_t>(dx) * 4);
        }
    }
}

void FLKFrameLayer::copyInto(FLKPixelBuffer& frame, int sourceY, int height, int frameX, int frameY, int clipTop,
                             int clipBottom, float brightness) const {
    int x0 = std::max(0, frameX), x1 = std::min(frame.width, frameX + width_);
    if (x1 <= x0) return;
    int top = std::max({frameY, clipTop, 0}), bottom = std::min({frameY + height, clipBottom, frame.height});
    const auto scale = static_cast<unsigned>(std::clamp(brightness, 0.0f, 1.0f) * 256);
    for (int y = top; y < bottom; ++y) {
        int sy = sourceY + (y - frameY);
        if (sy < 0 || sy >= height_) continue;
        const uint8_t* source = row(sy) + static_cast<size_t>(x0 - frameX) * 4;
        uint8_t* target = frame.bgra.data() + static_cast<size_t>(y) * frame.stride + static_cast<size_t>(x0) * 4;
        size_t bytes = static_cast<size_t>(x1 - x0) * 4;
        if (scale >= 256) {
            std::memcpy(target, source, bytes);
        } else {
            for (size_t i = 0; i < bytes; ++i) target[i] = static_cast<uint8_t>((source[i] * scale) >> 8);
        }
    }
}

namespace flk::recording {

void blendCanvas(const FLKCanvas& canvas, FLKPixelBuffer& frame, int x, int y) {
    FLKImage image = canvas.image();
    for (int sy = 0; sy < image.height; ++sy) {
        int dy = y + sy;
        if (dy < 0 || dy >= frame.height) continue;
        uint8_t* target = frame.bgra.data() + static_cast<size_t>(dy) * frame.stride;
        for (int sx = 0; sx < image.width; ++sx) {
            int dx = x + sx;
            const uint8_t* rgba = image.pixel(sx, sy);
            if (dx < 0 || dx >= frame.width || rgba[3] == 0) continue;
            uint8_t source[4];
            premultiply(rgba, source);
            uint8_t* d = target + static_cast<size_t>(dx) * 4;
            unsigned keep = 255 - source[3];
            for (int c = 0; c < 4; ++c) d[c] = static_cast<uint8_t>(source[c] + (d[c] * keep + 127) / 255);
        }
    }
}

void mixRows(FLKPixelBuffer& frame, const FLKPixelBuffer& other, float t, int top, int bottom) {
    const auto weight = static_cast<int>(std::clamp(t, 0.0f, 1.0f) * 256);
    for (int y = std::max(0, top); y < std::min(bottom, frame.height); ++y) {
        uint8_t* d = frame.bgra.data() + static_cast<size_t>(y) * frame.stride;
        const uint8_t* s = other.bgra.data() + static_cast<size_t>(y) * other.stride;
        for (int i = 0; i < frame.width * 4; ++i) d[i] = static_cast<uint8_t>(d[i] + (((s[i] - d[i]) * weight) >> 8));
    }
}

}  // namespace flk::recording

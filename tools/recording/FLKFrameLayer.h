#pragma once

#include <cstdint>
#include <vector>

#include "FLKCanvas.h"
#include "core/platform/FLKPixelBuffer.h"

// Premultiplied BGRA pixels drawn once and copied into video frames many
// times: a row copy per frame costs far less than drawing shapes again.
class FLKFrameLayer {
public:
    FLKFrameLayer() = default;
    FLKFrameLayer(int width, int height);
    static FLKFrameLayer fromCanvas(const FLKCanvas& canvas);

    int width() const { return width_; }
    int height() const { return height_; }
    const uint8_t* row(int y) const { return &bgra_[static_cast<size_t>(y) * width_ * 4]; }
    uint8_t* row(int y) { return &bgra_[static_cast<size_t>(y) * width_ * 4]; }

    // Pastes `canvas` with its top left at (x, y), replacing what was there.
    void paste(const FLKCanvas& canvas, int x, int y);

    // Copies the source rows [sourceY, sourceY + height) into `frame` at
    // (frameX, frameY), clipped to the frame and to `clipTop`..`clipBottom`,
    // with every channel scaled by `brightness` (1 copies exactly).
    void copyInto(FLKPixelBuffer& frame, int sourceY, int height, int frameX, int frameY, int clipTop, int clipBottom,
                  float brightness = 1) const;

private:
    int width_ = 0;
    int height_ = 0;
    std::vector<uint8_t> bgra_;
};

namespace flk::recording {
// Source-over of a canvas onto a frame with the canvas's top left at (x, y).
void blendCanvas(const FLKCanvas& canvas, FLKPixelBuffer& frame, int x, int y);
// frame = frame + (other - frame) * t over rows [top, bottom).
void mixRows(FLKPixelBuffer& frame, const FLKPixelBuffer& other, float t, int top, int bottom);
}  // namespace flk::recording

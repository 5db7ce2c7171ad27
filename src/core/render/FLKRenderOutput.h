#pragma once

#include "core/platform/FLKError.h"
#include "core/platform/FLKPixelBuffer.h"

class FLKRenderer;

// The consumer of an off-screen renderer's frames (the video and GIF
// writers). Called on the renderer's render thread, one frame at a time in
// order; the buffer is only valid until the call returns.
class FLKRenderOutput {
public:
    virtual ~FLKRenderOutput() = default;
    virtual void didRenderToBuffer(FLKRenderer& renderer, const FLKPixelBuffer& pixelBuffer) = 0;
    virtual void didFinishRenderingOffScreen(FLKRenderer&) {}
    // Instead of didFinishRenderingOffScreen when a frame could not be drawn:
    // the frames handed over are not the whole run. By default the run just ends.
    virtual void didFailRenderingOffScreen(FLKRenderer& renderer, const FLKError&) {
        didFinishRenderingOffScreen(renderer);
    }
};

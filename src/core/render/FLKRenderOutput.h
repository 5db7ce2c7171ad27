#pragma once

#include "core/platform/FLKError.h"
#include "core/platform/FLKLentPixels.h"
#include "core/platform/FLKPixelBuffer.h"

class FLKRenderer;

// The consumer of an off-screen renderer's frames (the video and GIF
// writers). Called on the renderer's render thread, one frame at a time in
// order; the buffer is only valid until the call returns.
class FLKRenderOutput {
public:
    virtual ~FLKRenderOutput() = default;
    virtual void didRenderToBuffer(FLKRenderer& renderer, const FLKPixelBuffer& pixelBuffer) = 0;
    // An output that keeps frames a while (queued for an encoder) may take
    // them where they were read back instead, without a copy: frames then
    // arrive through didRenderToLentPixels, and the renderer reuses their
    // memory once the lease is dropped. Asked once, when the run starts.
    virtual bool takesLentPixels() const { return false; }
    virtual void didRenderToLentPixels(FLKRenderer& /*renderer*/, FLKLentPixels /*pixels*/) {}
    virtual void didFinishRenderingOffScreen(FLKRenderer&) {}
    // Instead of didFinishRenderingOffScreen when a frame could not be drawn:
    // the frames handed over are not the whole run. By default the run just ends.
    virtual void didFailRenderingOffScreen(FLKRenderer& renderer, const FLKError&) {
        didFinishRenderingOffScreen(renderer);
    }
};

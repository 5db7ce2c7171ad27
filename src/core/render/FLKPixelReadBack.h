#pragma once

#include <array>
#include <functional>

#include "core/platform/FLKPixelBuffer.h"

// Reads resolved frames back as BGRA rows of exactly width x 4 bytes, top row
// first. Pipelined, a frame is copied into one of two pixel-pack buffers and
// handed on when the next frame has been queued, so the GPU draws frame n + 1
// while frame n is still travelling; unpipelined, each frame is handed on at
// once. GL objects belong to the current context: use one reader on one
// thread with one context current, and call releaseBuffers() there.
class FLKPixelReadBack {
public:
    using Deliver = std::function<void(const FLKPixelBuffer&)>;

    explicit FLKPixelReadBack(bool pipelined) : pipelined_(pipelined) {}
    ~FLKPixelReadBack() = default;
    FLKPixelReadBack(const FLKPixelReadBack&) = delete;
    FLKPixelReadBack& operator=(const FLKPixelReadBack&) = delete;

    bool isPipelined() const { return pipelined_; }
    // The buffer frames are delivered in, reused while the size stays.
    const FLKPixelBuffer& pixelBuffer() const { return pixelBuffer_; }

    // Reads `texture` (a BGRA8 GL texture of the given size) and delivers
    // either it or, pipelined, the frame queued before it.
    void readTexture(unsigned int texture, int width, int height, const Deliver& deliver);
    // Delivers the frame still queued, if any.
    void flush(const Deliver& deliver);
    // Deletes the pack buffers; a frame still queued is dropped.
    void releaseBuffers();

    // Makes the pixel buffer width x height unless it already is.
    void createBuffersWithWidth(int width, int height);

private:
    void deliverQueued(const Deliver& deliver);

    const bool pipelined_;
    FLKPixelBuffer pixelBuffer_;
    std::array<unsigned int, 2> packBuffers_{};
    std::array<void*, 2> fences_{};  // GLsync of the copy into each pack buffer
    int packWidth_ = 0;
    int packHeight_ = 0;
    int next_ = 0;         // the pack buffer the next frame goes into
    bool queued_ = false;  // the other pack buffer holds a frame not yet delivered
};

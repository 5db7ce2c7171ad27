#pragma once

#include <memory>

// The multisampled colour target (4x unless told otherwise) a frame is drawn into before it is
// resolved into the framebuffer texture: a renderbuffer on a framebuffer
// object. Framebuffer objects belong to the context that made them, so the
// target is made, used and destroyed with that context current.
class FLKMultisampleTarget {
public:
    static constexpr int kSampleCount = 4;

    // Needs a current context; null when the framebuffer is incomplete.
    static std::unique_ptr<FLKMultisampleTarget> make(int width, int height, int sampleCount = kSampleCount);
    ~FLKMultisampleTarget();
    FLKMultisampleTarget(const FLKMultisampleTarget&) = delete;
    FLKMultisampleTarget& operator=(const FLKMultisampleTarget&) = delete;

    int width() const { return width_; }
    int height() const { return height_; }
    int sampleCount() const { return sampleCount_; }
    bool fits(int width, int height) const { return width_ == width && height_ == height; }

    // Binds the target for drawing, sets the viewport and clears it to (0, 0, 0, 0).
    void beginPass();
    // Resolves the samples into level 0 of the GL texture `texture`.
    void resolveInto(unsigned int texture);

private:
    FLKMultisampleTarget(int width, int height, int sampleCount)
        : width_(width), height_(height), sampleCount_(sampleCount) {}

    const int width_;
    const int height_;
    const int sampleCount_;
    unsigned int renderbuffer_ = 0;
    unsigned int framebuffer_ = 0;
    unsigned int resolveFramebuffer_ = 0;
};

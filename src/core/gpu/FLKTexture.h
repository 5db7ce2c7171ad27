#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKNV12Frame.h"
#include "core/gpu/FLKTextureProvider.h"
#include "core/platform/FLKPixelBuffer.h"

// One video frame on its way to the GPU. Made on a decoder or capture thread
// without any GL call; refreshTexture (render thread) uploads it.
class FLKTexture : public FLKTextureProvider {
public:
    // A BGRA frame.
    FLKTexture(std::shared_ptr<const FLKPixelBuffer> sampleBuffer, FLKPixelFormat pixelFormat, double sampleTimeStamp);
    // A bi-planar frame; this class uploads plane 0 (luma) only.
    FLKTexture(FLKNV12Frame sampleBuffer, FLKPixelFormat pixelFormat, double sampleTimeStamp);
    ~FLKTexture() override;

    static int makeEven(int n) { return n + (n & 1); }

    FLKPixelFormat pixelFormat() const { return pixelFormat_; }
    double sampleTimeStamp() const { return sampleTimeStamp_; }
    const std::shared_ptr<const FLKPixelBuffer>& pixelSample() const { return pixelSample_; }
    const std::optional<FLKNV12Frame>& nv12Sample() const { return nv12Sample_; }

    // Uploads the frame into a texture of even width and height. A failure
    // leaves the previous texture (or none). Render thread only.
    void refreshTexture() override;
    std::shared_ptr<FLKGPUTexture> texture() const override;
    // Drops the uploaded texture; the frame stays, and refreshTexture uploads
    // it again. Render thread only.
    virtual void releaseTexture();

protected:
    void setTexture(std::shared_ptr<FLKGPUTexture> texture);

    const FLKPixelFormat pixelFormat_;
    const double sampleTimeStamp_;
    const std::shared_ptr<const FLKPixelBuffer> pixelSample_;  // immutable after construction
    const std::optional<FLKNV12Frame> nv12Sample_;            // immutable after construction

private:
    mutable std::mutex mutex_;
    std::shared_ptr<FLKGPUTexture> texture_;  // guarded by mutex_
};

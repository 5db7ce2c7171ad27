#include "core/gpu/FLKTexture.h"

FLKTexture::FLKTexture(std::shared_ptr<const FLKPixelBuffer> sampleBuffer, FLKPixelFormat pixelFormat,
                       double sampleTimeStamp)
    : pixelFormat_(pixelFormat), sampleTimeStamp_(sampleTimeStamp), pixelSample_(std::move(sampleBuffer)) {}

FLKTexture::FLKTexture(FLKNV12Frame sampleBuffer, FLKPixelFormat pixelFormat, double sampleTimeStamp)
    : pixelFormat_(pixelFormat), sampleTimeStamp_(sampleTimeStamp), nv12Sample_(std::move(sampleBuffer)) {}

FLKTexture::~FLKTexture() = default;

void FLKTexture::refreshTexture() {
    std::shared_ptr<FLKGPUTexture> made;
    if (pixelSample_ && pixelSample_->width > 0 && pixelSample_->height > 0) {
        const FLKPixelBuffer& buffer = *pixelSample_;
        size_t needed = static_cast<size_t>(buffer.stride) * (buffer.height - 1) +
                        static_cast<size_t>(buffer.width) * flkBytesPerPixel(pixelFormat_);
        if (buffer.bgra.size() < needed) return;
        made = FLKGPUTexture::uploadNow(makeEven(buffer.width), makeEven(buffer.height), pixelFormat_,
                                        buffer.bgra.data(), buffer.stride, buffer.width, buffer.height);
    } else if (nv12Sample_ && nv12Sample_->isValid()) {
        const FLKNV12Frame& frame = *nv12Sample_;
        if (static_cast<size_t>(frame.lumaStride) < frame.width * flkBytesPerPixel(pixelFormat_)) return;
        made = FLKGPUTexture::uploadNow(makeEven(frame.width), makeEven(frame.height), pixelFormat_, frame.luma,
                                        frame.lumaStride, frame.width, frame.height);
    }
    if (made) setTexture(std::move(made));
}

std::shared_ptr<FLKGPUTexture> FLKTexture::texture() const {
    std::lock_guard lock(mutex_);
    return texture_;
}

void FLKTexture::releaseTexture() { setTexture(nullptr); }

void FLKTexture::setTexture(std::shared_ptr<FLKGPUTexture> texture) {
    std::lock_guard lock(mutex_);
    texture_ = std::move(texture);
}

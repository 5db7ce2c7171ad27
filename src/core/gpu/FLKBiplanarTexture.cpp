#include "core/gpu/FLKBiplanarTexture.h"

#include <algorithm>

FLKBiplanarTexture::FLKBiplanarTexture(FLKNV12Frame sampleBuffer, double sampleTimeStamp)
    : FLKTexture(std::move(sampleBuffer), FLKPixelFormat::R8, sampleTimeStamp) {}

void FLKBiplanarTexture::refreshTexture() {
    if (!nv12Sample_ || !nv12Sample_->isValid()) return;
    const FLKNV12Frame& frame = *nv12Sample_;
    int chromaWidth = frame.chromaWidth();
    if (frame.lumaStride < frame.width || frame.chromaStride < chromaWidth * 2) return;

    int lumaSide = makeEven(frame.width);
    auto luma = FLKGPUTexture::uploadNow(lumaSide, lumaSide, FLKPixelFormat::R8, frame.luma, frame.lumaStride,
                                         frame.width, std::min(frame.height, lumaSide));
    int chromaSide = makeEven(chromaWidth);
    auto chroma = FLKGPUTexture::uploadNow(chromaSide, chromaSide, FLKPixelFormat::RG8, frame.chroma,
                                           frame.chromaStride, chromaWidth, std::min(frame.chromaHeight(), chromaSide));
    if (!luma || !chroma) return;
    luma->setChromaPlane(chroma);
    setTexture(std::move(luma));
    std::lock_guard lock(chromaMutex_);
    texture1_ = std::move(chroma);
}

void FLKBiplanarTexture::releaseTexture() {
    FLKTexture::releaseTexture();
    std::lock_guard lock(chromaMutex_);
    texture1_.reset();
}

std::shared_ptr<FLKGPUTexture> FLKBiplanarTexture::texture1() const {
    std::lock_guard lock(chromaMutex_);
    return texture1_;
}

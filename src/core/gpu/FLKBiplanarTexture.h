#pragma once

#include "core/gpu/FLKTexture.h"

// An NV12 frame as two textures: luma (R8) in texture(), chroma (RG8, one
// Cb/Cr pair a texel) in texture1().
class FLKBiplanarTexture : public FLKTexture {
public:
    FLKBiplanarTexture(FLKNV12Frame sampleBuffer, double sampleTimeStamp);

    // Each plane's texture is square: its side is the plane's width made even
    // (the shaders sample in normalised coordinates; decoded frames are square).
    void refreshTexture() override;
    void releaseTexture() override;
    std::shared_ptr<FLKGPUTexture> texture1() const;

private:
    mutable std::mutex chromaMutex_;
    std::shared_ptr<FLKGPUTexture> texture1_;  // guarded by chromaMutex_
};

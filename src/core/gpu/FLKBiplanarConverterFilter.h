#pragma once

#include "core/gpu/FLKBiplanarTexture.h"
#include "core/gpu/FLKImageFilter.h"
#include "core/media/FLKVideoFrame.h"

// Turns a bi-planar 4:2:0 frame (luma at unit 0, interleaved CbCr at unit 2)
// into opaque RGBA with the frame's own matrix and range (the decoder reports
// them); BT.709 limited range until told otherwise. The provider must be an
// FLKBiplanarTexture.
class FLKBiplanarConverterFilter : public FLKImageFilter {
public:
    static std::shared_ptr<FLKBiplanarConverterFilter> filter();
    static std::shared_ptr<FLKBiplanarConverterFilter> filter(std::shared_ptr<FLKContext> context);
    static std::shared_ptr<FLKBiplanarConverterFilter> newWithDictionary(const FLKJSON& dictionary);
    ~FLKBiplanarConverterFilter() override;

    std::shared_ptr<FLKBiplanarTexture> biplanarTexture() const;

    FLKColorMatrix colorMatrix() const;
    FLKColorRange colorRange() const;
    void setColorMatrix(FLKColorMatrix matrix);
    void setColorRange(FLKColorRange range);
    // Both from a decoded frame.
    void setColorimetry(FLKColorMatrix matrix, FLKColorRange range);

    std::string className() const override { return "FLKBiplanarConverterFilter"; }

protected:
    bool hasOtherInputs(FLKTextureProvider& provider) override;
    bool setTextures(FLKTextureProvider& provider, FLKGPUTexture& source, FLKGPUTexture& output) override;
    void setBuffers() override;

private:
    explicit FLKBiplanarConverterFilter(std::shared_ptr<FLKContext> context);

    FLKColorMatrix colorMatrix_ = FLKColorMatrix::BT709;  // guarded by mutex_
    FLKColorRange colorRange_ = FLKColorRange::Limited;   // guarded by mutex_
    unsigned int uniformBuffer_ = 0;                      // guarded by mutex_; render thread only
};

#pragma once

#include <vector>

#include "core/gpu/FLKImageFilter.h"

// A Gaussian blur over a square window of roundf(radius) * 2 + 1 texels a
// side, edges clamped; the weights live in an R32F texture at unit 2.
class FLKGaussianBlur2DFilter : public FLKImageFilter {
public:
    static std::shared_ptr<FLKGaussianBlur2DFilter> filterWithRadius(float radius);
    static std::shared_ptr<FLKGaussianBlur2DFilter> filterWithRadius(float radius,
                                                                     std::shared_ptr<FLKContext> context);
    // Radius 0 (a copy) from "functionName" on the shared context.
    static std::shared_ptr<FLKGaussianBlur2DFilter> newWithDictionary(const FLKJSON& dictionary);
    ~FLKGaussianBlur2DFilter() override;

    float radius() const;
    float sigma() const;
    // Also sets sigma to half the radius.
    void setRadius(float radius);
    void setSigma(float sigma);

    // The n x n weights, rows first, normalised to sum to 1.
    static std::vector<float> blurWeights(float radius, float sigma);
    static int blurWeightSide(float radius);
    // The GL name of the weight texture, 0 until the next pass makes it.
    unsigned int blurWeightTexture() const;

    std::string className() const override { return "FLKGaussianBlur2DFilter"; }

protected:
    bool setTextures(FLKTextureProvider& provider, FLKGPUTexture& source, FLKGPUTexture& output) override;

private:
    FLKGaussianBlur2DFilter(std::shared_ptr<FLKContext> context, float radius);
    // Called with mutex_ held and a context current.
    void generateBlurWeightTexture();
    void dropWeightTextureLocked();

    float radius_;                        // guarded by mutex_
    float sigma_;                         // guarded by mutex_
    unsigned int blurWeightTexture_ = 0;  // guarded by mutex_; made on the render thread
};

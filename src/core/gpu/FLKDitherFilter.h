#pragma once

#include "core/gpu/FLKImageFilter.h"

// Ordered (8x8 Bayer) dithering of each colour channel to 32 levels, so that
// smooth gradients survive the reduction to a small palette; alpha is kept.
class FLKDitherFilter : public FLKImageFilter {
public:
    static constexpr int kLevels = 32;

    static std::shared_ptr<FLKDitherFilter> filter();
    static std::shared_ptr<FLKDitherFilter> filter(std::shared_ptr<FLKContext> context);
    static std::shared_ptr<FLKDitherFilter> newWithDictionary(const FLKJSON& dictionary);

    std::string className() const override { return "FLKDitherFilter"; }

private:
    explicit FLKDitherFilter(std::shared_ptr<FLKContext> context);
};

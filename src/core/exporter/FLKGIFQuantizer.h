#pragma once

#include <cstdint>
#include <vector>

#include "core/exporter/FLKGIFWriter.h"

struct liq_attr;
struct liq_histogram;
struct liq_result;

// Colour reduction for GIF frames with libimagequant: a palette shared by
// the whole animation, learnt from a histogram of its frames, or one palette
// per frame. Every palette keeps one fully transparent entry, used where a
// frame's pixel is already shown well enough by the frames before it.
// Not thread-safe: one encoding thread owns it.
class FLKGIFQuantizer {
public:
    // `speed` 1 (slow, best) to 10 (fast); `ditherLevel` 0 (none) to 1 (full).
    FLKGIFQuantizer(int speed, float ditherLevel);
    ~FLKGIFQuantizer();
    FLKGIFQuantizer(const FLKGIFQuantizer&) = delete;
    FLKGIFQuantizer& operator=(const FLKGIFQuantizer&) = delete;

    // Counts the colours of an RGBA image for the shared palette.
    bool addToHistogram(const std::uint8_t* rgba, int width, int height);
    bool buildSharedPalette();
    const std::vector<FLKGIFColor>& sharedColors() const { return sharedColors_; }
    int sharedTransparentIndex() const { return sharedTransparentIndex_; }

    struct Remapped {
        std::vector<std::uint8_t> indices;
        std::vector<FLKGIFColor> colors;
        int transparentIndex = -1;
    };
    // Dithers `rgba` onto the shared palette (`perFramePalette` false) or onto
    // a palette made for this image. `shown` (same size, may be null) is what
    // the viewer already sees there; pixels close to it become transparent.
    bool remap(const std::uint8_t* rgba, const std::uint8_t* shown, int width, int height, bool perFramePalette,
               Remapped& out);

private:
    bool remapWith(liq_result* result, const std::uint8_t* rgba, const std::uint8_t* shown, int width, int height,
                   Remapped& out);

    const float ditherLevel_;
    liq_attr* attr_ = nullptr;
    liq_histogram* histogram_ = nullptr;
    liq_result* shared_ = nullptr;
    std::vector<FLKGIFColor> sharedColors_;
    int sharedTransparentIndex_ = -1;
};

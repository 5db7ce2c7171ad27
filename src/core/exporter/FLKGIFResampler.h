#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/platform/FLKPixelBuffer.h"

// Turns a rendered BGRA frame into the opaque RGBA frame of the GIF's size:
// area averaging when shrinking, bilinear when enlarging, each axis on its
// own. The weights depend only on the two sizes and are kept between frames.
class FLKGIFResampler {
public:
    FLKGIFResampler(int outputWidth, int outputHeight);

    int outputWidth() const { return outputWidth_; }
    int outputHeight() const { return outputHeight_; }

    // `rgba` receives outputWidth x outputHeight pixels, alpha always 255;
    // black for a buffer whose bytes do not cover its size.
    void resample(const FLKPixelBuffer& source, std::vector<std::uint8_t>& rgba);

private:
    struct Tap {
        int index;
        float weight;
    };
    struct Taps {
        std::vector<int> first;   // per output sample, its first entry in `taps`
        std::vector<Tap> taps;    // per output sample `first[i]` .. `first[i + 1]`
    };
    static Taps tapsFor(int sourceLength, int outputLength);

    void copyOpaque(const FLKPixelBuffer& source, std::vector<std::uint8_t>& rgba) const;

    const int outputWidth_;
    const int outputHeight_;
    int sourceWidth_ = 0;
    int sourceHeight_ = 0;
    Taps horizontal_;
    Taps vertical_;
    std::vector<float> rows_;  // horizontally filtered source rows, RGB floats
};

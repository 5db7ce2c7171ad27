#pragma once

#include "core/media/FLKVideoFrame.h"

// The std140 block "Colorimetry" of the shaders that turn a frame's luma and
// chroma planes into RGB (shaders/ycbcr_color.frag), bound at kBinding.
struct FLKYCbCrColorimetry {
    static constexpr unsigned kBinding = 2;

    float kr = 0.2126f;  // luma weights of red and blue, BT.709 unless BT.601
    float kb = 0.0722f;
    float fullRange = 0.0f;
    float reserved = 0.0f;

    static FLKYCbCrColorimetry of(FLKColorMatrix matrix, FLKColorRange range) {
        FLKYCbCrColorimetry values;
        if (matrix == FLKColorMatrix::BT601) values.kr = 0.299f, values.kb = 0.114f;
        if (range == FLKColorRange::Full) values.fullRange = 1.0f;
        return values;
    }
};

#pragma once

#include <memory>

#include "core/platform/FLKPixelBuffer.h"

// One captured video frame as a video sprite receives it: BGRA pixels and
// the frame's presentation time in seconds.
struct FLKSampleBuffer {
    std::shared_ptr<const FLKPixelBuffer> imageBuffer;
    double presentationTime = 0;
};

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/platform/FLKPixelBuffer.h"

// Part of a source's own compressed stream (Annex-B H.264), kept as it came.
struct FLKCapturedPacket {
    std::vector<uint8_t> data;
    bool keyFrame = false;
    double arrivalTime = 0;  // seconds on the monotonic clock
};

// One picture as a capture input delivers it: BGRA pixels stamped with the
// moment it arrived, and for sources whose stream is recorded as is, the
// compressed data that arrived since the previous picture.
struct FLKCapturedFrame {
    std::shared_ptr<const FLKPixelBuffer> pixels;
    double arrivalTime = 0;  // seconds on the monotonic clock
    std::vector<std::shared_ptr<const FLKCapturedPacket>> packets;
    // The picture went out before (without its packets): these are for the recording only.
    bool alreadyShown = false;
};

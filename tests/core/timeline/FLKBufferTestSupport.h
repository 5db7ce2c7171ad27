#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "core/gpu/FLKTexture.h"
#include "core/media/FLKSyntheticVideo.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoClipMedia.h"
#include "core/media/FLKMediaTestSupport.h"

namespace flktest {

// Numbered 320 x 240 videos at 30 frames a second, made once per run.
inline std::string numberedVideo(int frameCount) {
    FLKSyntheticVideo::Options options;
    options.frameCount = frameCount;
    return flk::test::syntheticVideo("numbered-" + std::to_string(frameCount) + ".mp4", options);
}
inline std::string twelveSecondVideo() { return numberedVideo(360); }

inline std::shared_ptr<FLKVideoClip> clipOfFile(const std::string& identifier, const std::string& path,
                                                FLKTimeRange timeRange, FLKTimeRange clipRange) {
    return std::make_shared<FLKVideoClip>(identifier, FLKVideoClipMedia::mediaWithURL(path), timeRange, clipRange);
}

// Background decoding has no completion the managers expose: wait for the
// condition, giving up (and failing) after a minute.
inline bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// The number a decoded frame shows.
inline std::optional<uint32_t> frameNumber(const std::shared_ptr<FLKTexture>& texture) {
    if (!texture || !texture->nv12Sample()) return std::nullopt;
    const FLKNV12Frame& frame = *texture->nv12Sample();
    return FLKSyntheticVideo::numberInLuma(frame.luma, frame.lumaStride, frame.width, frame.height);
}

// The frame shown at media time t of a 30 fps file, sampled half a frame off
// the boundaries.
inline uint32_t frameAt(double mediaTime) { return static_cast<uint32_t>(mediaTime * 30 + 1e-6); }

}  // namespace flktest

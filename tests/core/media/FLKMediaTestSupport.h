#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/media/FLKSyntheticVideo.h"

namespace flk::test {

// The number of the frame shown at time t by a recording whose frames start
// at `times`: the latest one starting before t, however far back. One
// starting within 0.1 ms of t shows only after it: at an exact frame
// boundary the lookups answer the frame before.
inline uint32_t frameShownAt(const std::vector<double>& times, double t) {
    uint32_t shown = 0;
    for (size_t n = 0; n < times.size() && times[n] < t - 0.0001; ++n) shown = static_cast<uint32_t>(n);
    return shown;
}

// A 30 fps screen recording that sends no frames while the screen is still:
// 0.53 s after its frame at 1 s, and 2 s after its frame just before 2 s.
inline FLKSyntheticVideo::Options recordingWithStillScreens() {
    FLKSyntheticVideo::Options options;
    for (int n = 0; n <= 30; ++n) options.frameTimes.push_back(n / 30.0);
    for (int n = 0; n < 15; ++n) options.frameTimes.push_back(1.53 + n / 30.0);
    for (int n = 0; n < 15; ++n) options.frameTimes.push_back(4.0 + n / 30.0);
    return options;
}

// A file path inside this test program's own temporary home.
std::filesystem::path mediaPath(const std::string& name);
// Writes a numbered test video once per program run and answers its path.
std::string syntheticVideo(const std::string& name, const FLKSyntheticVideo::Options& options);

// What libavformat says about a stream, read independently of FLKAsset.
struct StreamFacts {
    std::string codec;
    int profile = -1;
    std::string pixelFormat;
    int colorPrimaries = -1, colorTransfer = -1, colorSpace = -1, colorRange = -1;
    double fps = 0;
    double duration = 0;
    long packets = 0;
};
// The first stream of the given type (AVMEDIA_TYPE_*), counted packet by packet.
StreamFacts probeStream(const std::string& path, int mediaType);
// The top-level MP4 box names in file order ("ftyp", "moov", "mdat", ...).
std::vector<std::string> topLevelBoxes(const std::string& path);

}  // namespace flk::test

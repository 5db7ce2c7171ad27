#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/media/FLKSyntheticVideo.h"

namespace flk::test {

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

#pragma once

#include <cstdint>
#include <filesystem>

#include "core/timeline/FLKTimelineClipSource.h"

// What the video buffer manager asks its track: whether an asset's readers
// are still needed.
class FLKTimelineVideoTrackClipSource : public FLKTimelineClipSource {
public:
    // Video clips of the track cut from the file at `assetURL`.
    virtual uint64_t numberOfClipsForAsset(const std::filesystem::path& assetURL) const = 0;
};

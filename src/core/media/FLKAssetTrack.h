#pragma once

#include <string>

#include "core/media/FLKVideoOrientation.h"
#include "core/platform/FLKSize.h"

enum class FLKMediaType { Video, Audio };

// What probing tells about one stream of a media file.
struct FLKAssetTrack {
    int streamIndex = -1;
    FLKMediaType mediaType = FLKMediaType::Video;
    std::string codecName;
    // Seconds in the file's own media time; start is usually 0.
    double start = 0;
    double duration = 0;

    // Video only.
    float nominalFrameRate = 0;
    FLKSize naturalSize;              // coded size in pixels, before the orientation
    FLKVideoOrientation orientation;  // from the display matrix; decoded frames come out turned by it
    std::string pixelFormatName;      // e.g. "yuv420p", "yuv420p10le"
    int bitsPerComponent = 8;

    // Audio only.
    int sampleRate = 0;
    int channelCount = 0;

    double end() const { return start + duration; }
    // Size as shown, and as the decoders deliver it: width and height swap for quarter turns.
    FLKSize presentationSize() const {
        return orientation.swapsSides() ? FLKSize{naturalSize.height, naturalSize.width} : naturalSize;
    }
};

#pragma once

#include <string>

#include "core/platform/FLKError.h"

// Adds sound to a finished silent MP4: the video stream is copied as it is,
// the first audio stream of `audioPath` is encoded to AAC and cut to the
// video's length (silence is written when `audioPath` is empty, and pads
// audio shorter than the video). The result is written beside `destination`
// with the index in front (fast start) and renamed into place only when it
// is complete; on failure the destination is left untouched.
class FLKAudioMuxer {
public:
    static bool muxVideo(const std::string& videoPath, const std::string& audioPath,
                         const std::string& destinationPath, FLKError* error = nullptr);
};

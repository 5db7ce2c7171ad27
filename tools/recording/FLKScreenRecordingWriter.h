#pragma once

#include <filesystem>

#include "core/platform/FLKError.h"

// Writes the sample screen recording: the mock app's scripted session as an
// H.264 MP4. The file appears complete or not at all.
class FLKScreenRecordingWriter {
public:
    struct Options {
        int width = 1080;
        int height = 1920;
        double duration = 10;
        unsigned seed = 1;
        int fps = 30;
    };

    static bool write(const std::filesystem::path& url, const Options& options, FLKError* error = nullptr);
};

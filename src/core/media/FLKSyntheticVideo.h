#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/media/FLKVideoOrientation.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKPixelBuffer.h"

// Generated test media. Each video frame shows its frame number as a row of
// black/white blocks across the top (most significant bit first) that
// survives compression and scaling, so a reader's output can be checked
// frame by frame; the rest of the picture is a moving gradient.
class FLKSyntheticVideo {
public:
    static constexpr int kCodeBits = 16;

    struct Options {
        int width = 320;
        int height = 240;
        int fps = 30;
        int frameCount = 30;
        std::string preset = "ultrafast";
        std::string pixelFormat = "yuv420p";
        // Stored as a phone stores it: width x height turned the other way,
        // with a display matrix that turns it back, so that the numbers read
        // across the top only once the orientation is applied.
        FLKVideoOrientation orientation;
        // Adds an AAC sine tone as long as the video.
        bool withTone = false;
        // When given, frame n starts showing at frameTimes[n] seconds (they
        // increase; frameCount is ignored), like a screen recorder that
        // writes a frame only when the screen changes.
        std::vector<double> frameTimes;
        // When the recording stops, for a screen still at its end; 0: one
        // frame period (1 / fps) after the last frame.
        double endTime = 0;
    };
    // The times at which a file made with `options` shows its frames.
    static std::vector<double> frameTimesOf(const Options& options);

    static bool writeVideo(const std::string& path, const Options& options, FLKError* error = nullptr);
    // An audio-only file (AAC in MP4) with a sine tone.
    static bool writeTone(const std::string& path, double seconds, double frequency = 440.0,
                          FLKError* error = nullptr);

    static FLKPixelBuffer frameWithNumber(int width, int height, uint32_t number);
    // Reads the number back from a luma plane (any size: the code spans the
    // width). nullopt when the blocks are not clean black and white.
    static std::optional<uint32_t> numberInLuma(const uint8_t* luma, int stride, int width, int height);
};

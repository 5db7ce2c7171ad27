#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "core/exporter/FLKGIFQuantizer.h"
#include "core/exporter/FLKGIFResampler.h"
#include "core/exporter/FLKGIFWriter.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKPixelBuffer.h"

// Turns a sequence of rendered frames into an animated GIF on an open file
// descriptor. Each frame is cut to the rectangle that changed since the frame
// before; inside it, pixels the viewer already sees closely enough become
// transparent and the frame is left in place, which keeps screen recordings
// small. With a shared palette the changed rectangles are spooled to an
// anonymous temporary file and encoded in `finish`, once the palette has
// seen every frame; with per-frame palettes each frame is encoded at once.
// Not thread-safe: one thread drives an encoder.
class FLKGIFEncoder {
public:
    enum class PaletteMode { Shared, PerFrame };

    struct Settings {
        int width = 0;
        int height = 0;
        PaletteMode paletteMode = PaletteMode::Shared;
        int speed = 8;
        float ditherLevel = 0.5f;
        std::uint16_t loopCount = 0;
        double frameDelay = 0.1;  // seconds each frame is shown
    };

    FLKGIFEncoder(int fd, std::filesystem::path displayURL, const Settings& settings);
    ~FLKGIFEncoder();

    bool addFrame(const FLKPixelBuffer& frame, FLKError* error);
    bool finish(FLKError* error);

    std::uint64_t framesAdded() const { return framesAdded_; }

    // Delay of frame `index` in hundredths of a second, rounded so that the
    // first n frames always last n x frameDelay to the nearest hundredth.
    static int delayHundredths(std::uint64_t index, double frameDelay);

private:
    struct Rect {
        int left = 0, top = 0, width = 0, height = 0;
        bool empty() const { return width <= 0 || height <= 0; }
    };

    Rect changedRect(const std::vector<std::uint8_t>& rgba) const;
    static void crop(const std::vector<std::uint8_t>& rgba, int stride, const Rect& rect, std::vector<std::uint8_t>& out);
    bool spool(const Rect& rect, FLKError* error);
    bool encodeSpooled(FLKError* error);
    bool encode(const Rect& rect, const std::uint8_t* rgba, FLKError* error);
    bool writeUnchangedFrame(int transparentIndex, const std::vector<FLKGIFColor>& colors, FLKError* error);
    void showOnScreen(const Rect& rect, const FLKGIFQuantizer::Remapped& remapped);
    bool ensureBegun(FLKError* error);
    bool fail(const std::string& reason, FLKError* error);

    const std::filesystem::path displayURL_;
    const Settings settings_;
    FLKGIFResampler resampler_;
    FLKGIFQuantizer quantizer_;
    FLKGIFWriter writer_;
    bool begun_ = false;

    std::vector<std::uint8_t> current_;   // this frame, RGBA at the output size
    std::vector<std::uint8_t> previous_;  // the frame before, as rendered
    std::vector<std::uint8_t> shown_;     // what a viewer sees after the frames written so far
    std::vector<std::uint8_t> cropped_;
    std::vector<std::uint8_t> shownCropped_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> spool_{nullptr, &std::fclose};
    std::uint64_t framesAdded_ = 0;
    std::uint64_t framesWritten_ = 0;
};

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/platform/FLKJSON.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"

// One export preset: a named target with limits on shape, resolution,
// duration, file size and frame rate. Values are read as found; a missing key
// reads as zero (or an empty string) and nothing is validated, except that a
// ratio string must hold both of its parts.
class FLKExportSettings {
public:
    // Throws std::invalid_argument for a ratio string without ":".
    explicit FLKExportSettings(const FLKJSON& dictionary);
    static std::shared_ptr<FLKExportSettings> settingsWithDictionary(const FLKJSON& dictionary);

    // "16:9" gives 16 × 9; each part is narrowed to a float.
    static FLKSize aspectRatioFromString(const std::string& ratio);
    // {"width", "height"} read as integers.
    static FLKSize sizeFromDictionary(const FLKJSON& dictionary);

    const std::string& name() const { return name_; }
    const std::string& imageName() const { return imageName_; }
    FLKSize minAspectRatio() const { return minAspectRatio_; }
    FLKSize maxAspectRatio() const { return maxAspectRatio_; }
    FLKSize minVideoResolution() const { return minVideoResolution_; }
    FLKSize maxVideoResolution() const { return maxVideoResolution_; }
    double minDuration() const { return minDuration_; }
    double maxDuration() const { return maxDuration_; }
    std::uint64_t maxSizeMB() const { return maxSizeMB_; }
    std::uint64_t maxNumFrames() const { return maxNumFrames_; }
    std::uint64_t fps() const { return fps_; }
    // Store previews show the screen alone, without the device around it.
    bool isFrameless() const { return frameless_; }

    // The part of a canvas of `canvasSize` (scene units) that an export with
    // this preset films: the largest rectangle of the preset's shape that fits
    // the canvas, centred.
    FLKRect exportFrameForCanvasSize(FLKSize canvasSize) const;

private:
    std::string name_;
    std::string imageName_;
    FLKSize minAspectRatio_;
    FLKSize maxAspectRatio_;
    FLKSize minVideoResolution_;
    FLKSize maxVideoResolution_;
    double minDuration_ = 0;
    double maxDuration_ = 0;
    std::uint64_t maxSizeMB_ = 0;
    std::uint64_t maxNumFrames_ = 0;
    std::uint64_t fps_ = 0;
    bool frameless_ = false;
};

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/exporter/FLKExportSettings.h"
#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKRect.h"

// The presets the command line offers: the application's list, looked up by
// name, and made-up ones for an explicit size.
class ExportPresets {
public:
    static constexpr std::uint64_t kDefaultGIFFps = 15;

    static std::vector<std::shared_ptr<const FLKExportSettings>> presetsOfType(FLKExportType type,
                                                                              FLKError* error = nullptr);
    // Matched ignoring letter case; null with the error listing the known names.
    static std::shared_ptr<const FLKExportSettings> presetNamed(FLKExportType type, const std::string& name,
                                                                FLKError* error);
    // A preset of exactly `size`, without limits, named "WxH".
    static std::shared_ptr<const FLKExportSettings> customPreset(FLKSize size, std::uint64_t fps);

    // The part of the scene a preset films: its shape, as large as fits the
    // camera's frame, centred on it.
    static FLKRect exportFrame(const FLKExportSettings& preset, const FLKRect& cameraFrame);
};

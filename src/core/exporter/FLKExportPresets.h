#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/exporter/FLKExportSettings.h"
#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKRect.h"

class FLKScene;
class FLKTemplate;

// The application's export presets, looked up by name, made-up ones for an
// explicit size, and what a preset asks of the scene it films. The command
// line tool and the export inspector both export through these.
class FLKExportPresets {
public:
    // Every export renders at this rate; GIFs are thinned to their own rate.
    static constexpr std::uint64_t kRenderFps = 30;
    static constexpr std::uint64_t kDefaultGIFFps = 15;

    static std::vector<std::shared_ptr<const FLKExportSettings>> presetsOfType(FLKExportType type,
                                                                              FLKError* error = nullptr);
    // Matched ignoring letter case; null with the error listing the known names.
    static std::shared_ptr<const FLKExportSettings> presetNamed(FLKExportType type, const std::string& name,
                                                                FLKError* error);
    // A preset of exactly `size`, without limits, named "WxH".
    static std::shared_ptr<const FLKExportSettings> customPreset(FLKSize size, std::uint64_t fps);
    static std::string sizeName(FLKSize size);

    // The part of the scene a preset films: its shape, as large as fits the
    // camera's frame, centred on it.
    static FLKRect exportFrame(const FLKExportSettings& preset, const FLKRect& cameraFrame);
    // The rate a GIF of the preset is written at: its own, or the default.
    static std::uint64_t gifFps(const FLKExportSettings& preset);

    // Whether the scene shows a device around the screen.
    static bool showsDeviceArtwork(const FLKScene& scene);
    // A template whose scene shows no device artwork, for store previews.
    static std::shared_ptr<FLKTemplate> framelessTemplate();
    // Stores reject previews showing a device: the warning when a frameless
    // preset would film one.
    static std::optional<FLKError> framelessIssue(const FLKExportSettings& preset, const FLKScene& scene);
};

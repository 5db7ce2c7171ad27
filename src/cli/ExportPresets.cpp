#include "cli/ExportPresets.h"

#include <algorithm>
#include <cctype>

#include "cli/CommandSupport.h"
#include "core/exporter/FLKExportSettingsParser.h"
#include "core/platform/FLKPaths.h"

namespace {
FLKExportSettingsParser& parser() {
    static auto* shared = new FLKExportSettingsParser("FLKExportSettings");
    return *shared;
}

bool equalIgnoringCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}
}  // namespace

std::vector<std::shared_ptr<const FLKExportSettings>> ExportPresets::presetsOfType(FLKExportType type,
                                                                                  FLKError* error) {
    return parser().settingsForExportType(type, error);
}

std::shared_ptr<const FLKExportSettings> ExportPresets::presetNamed(FLKExportType type, const std::string& name,
                                                                   FLKError* error) {
    const auto presets = presetsOfType(type, error);
    for (const auto& preset : presets) {
        if (equalIgnoringCase(preset->name(), name)) return preset;
    }
    std::string known;
    for (const auto& preset : presets) known += (known.empty() ? "\"" : ", \"") + preset->name() + "\"";
    flk::setError(error, flk::fileSystemErrorWithMessage("There is no " + std::string(FLKFileTypeForExportType(type)) +
                                                         " preset named \"" + name + "\".",
                                                         0, known.empty() ? "" : "Presets: " + known + "."));
    return nullptr;
}

std::shared_ptr<const FLKExportSettings> ExportPresets::customPreset(FLKSize size, std::uint64_t fps) {
    const FLKJSON resolution{{"width", size.width}, {"height", size.height}};
    return FLKExportSettings::settingsWithDictionary(FLKJSON{{"name", flk::cli::sizeString(size)},
                                                             {"minResolution", resolution},
                                                             {"maxResolution", resolution},
                                                             {"fps", fps}});
}

FLKRect ExportPresets::exportFrame(const FLKExportSettings& preset, const FLKRect& cameraFrame) {
    FLKRect frame = preset.exportFrameForCanvasSize(cameraFrame.size);
    frame.origin.x += cameraFrame.origin.x;
    frame.origin.y += cameraFrame.origin.y;
    return frame;
}

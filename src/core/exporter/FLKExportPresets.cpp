#include "core/exporter/FLKExportPresets.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "core/exporter/FLKExportSettingsParser.h"
#include "core/exporter/FLKExportVideoSanityChecker.h"
#include "core/model/FLKTemplate.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKPaths.h"
#include "core/scene/FLKScene.h"

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

std::vector<std::shared_ptr<const FLKExportSettings>> FLKExportPresets::presetsOfType(FLKExportType type,
                                                                                     FLKError* error) {
    return parser().settingsForExportType(type, error);
}

std::shared_ptr<const FLKExportSettings> FLKExportPresets::presetNamed(FLKExportType type, const std::string& name,
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

std::string FLKExportPresets::sizeName(FLKSize size) {
    return std::to_string(std::lround(size.width)) + "x" + std::to_string(std::lround(size.height));
}

std::shared_ptr<const FLKExportSettings> FLKExportPresets::customPreset(FLKSize size, std::uint64_t fps) {
    const FLKJSON resolution{{"width", size.width}, {"height", size.height}};
    return FLKExportSettings::settingsWithDictionary(
        FLKJSON{{"name", sizeName(size)}, {"minResolution", resolution}, {"maxResolution", resolution}, {"fps", fps}});
}

FLKRect FLKExportPresets::exportFrame(const FLKExportSettings& preset, const FLKRect& cameraFrame) {
    FLKRect frame = preset.exportFrameForCanvasSize(cameraFrame.size);
    frame.origin.x += cameraFrame.origin.x;
    frame.origin.y += cameraFrame.origin.y;
    return frame;
}

std::uint64_t FLKExportPresets::gifFps(const FLKExportSettings& preset) {
    return preset.fps() ? std::min(preset.fps(), kRenderFps) : kDefaultGIFFps;
}

// Device artwork is a plain picture sprite; recordings and other sprite kinds
// do not count.
bool FLKExportPresets::showsDeviceArtwork(const FLKScene& scene) {
    for (const auto& node : scene.recursiveAllChildren()) {
        if (node->className() == "FLKTexturedSprite") return true;
    }
    return false;
}

std::shared_ptr<FLKTemplate> FLKExportPresets::framelessTemplate() {
    for (const auto& aTemplate : FLKTemplateManager::defaultManager().templates()) {
        auto scene = aTemplate->scene();
        if (scene && !showsDeviceArtwork(*scene)) return aTemplate;
    }
    return nullptr;
}

std::optional<FLKError> FLKExportPresets::framelessIssue(const FLKExportSettings& preset, const FLKScene& scene) {
    if (!preset.isFrameless() || !showsDeviceArtwork(scene)) return std::nullopt;
    auto frameless = framelessTemplate();
    return FLKError::make(kFLKExportSettingsErrorDomain, 0, "The video does not fit the export settings.",
                          "\"" + preset.name() +
                              "\" is a store preview, and stores reject previews that show a device frame; this "
                              "scene shows one.",
                          "Start from the frameless template \"" +
                              (frameless ? frameless->name() : std::string("Full Screen")) + "\" instead.");
}

#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/exporter/FLKExportSettings.h"
#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKError.h"

// Reads the export presets of a property list keyed by file extension ("mp4",
// "gif"), one list per export type, each read once and then kept. Any thread
// may use a parser.
class FLKExportSettingsParser {
public:
    using SettingsList = std::vector<std::shared_ptr<const FLKExportSettings>>;

    // The application's resource `settingsName` (the app uses "FLKExportSettings"),
    // looked up on first use.
    explicit FLKExportSettingsParser(std::string settingsName);
    // Reads `url` instead of looking a resource up.
    FLKExportSettingsParser(std::string settingsName, std::filesystem::path url);

    const std::string& settingsName() const { return settingsName_; }

    // The presets of a type, in file order. A missing file or key gives an
    // empty list; an unreadable file or preset sets `error` and is logged,
    // the readable presets are still answered.
    SettingsList settingsForExportType(FLKExportType type, FLKError* error = nullptr);

    static std::optional<std::string> keyForExportType(FLKExportType type);

private:
    std::optional<std::filesystem::path> settingsURL(FLKError* error) const;
    SettingsList readSettingsForKey(const std::string& key, FLKError* error) const;

    const std::string settingsName_;
    const std::optional<std::filesystem::path> explicitURL_;
    std::mutex mutex_;
    std::map<std::string, SettingsList> settings_;  // guarded by mutex_
};

#include "core/exporter/FLKExportSettingsParser.h"

#include <cerrno>
#include <stdexcept>

#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKResources.h"
#include "core/platform/FLKSerializable.h"

namespace {
void reportReadError(const std::filesystem::path& url, const std::string& problem, FLKError* error) {
    std::string description = "Error reading file " + url.string();
    flk::log("%s: %s", description.c_str(), problem.c_str());
    flk::setError(error, flk::fileSystemErrorWithMessage(description, 0, problem));
}
}  // namespace

FLKExportSettingsParser::FLKExportSettingsParser(std::string settingsName) : settingsName_(std::move(settingsName)) {}

FLKExportSettingsParser::FLKExportSettingsParser(std::string settingsName, std::filesystem::path url)
    : settingsName_(std::move(settingsName)), explicitURL_(std::move(url)) {}

std::optional<std::string> FLKExportSettingsParser::keyForExportType(FLKExportType type) {
    switch (type) {
        case FLKExportTypeMP4:
            return kFLKFileExtensionMP4;
        case FLKExportTypeGIF:
            return kFLKFileExtensionGIF;
        default:
            return std::nullopt;
    }
}

FLKExportSettingsParser::SettingsList FLKExportSettingsParser::settingsForExportType(FLKExportType type,
                                                                                     FLKError* error) {
    auto key = keyForExportType(type);
    if (!key) return {};
    std::lock_guard lock(mutex_);
    auto cached = settings_.find(*key);
    if (cached != settings_.end()) return cached->second;
    SettingsList list = readSettingsForKey(*key, error);
    settings_.emplace(*key, list);
    return list;
}

std::optional<std::filesystem::path> FLKExportSettingsParser::settingsURL(FLKError* error) const {
    if (explicitURL_) return explicitURL_;
    auto url = FLKResources::URLForResource(settingsName_, kFLKFileExtensionPlist);
    if (!url) {
        std::string message = "The export presets " + settingsName_ + "." + kFLKFileExtensionPlist +
                              " are missing from the application's resources.";
        flk::log("%s", message.c_str());
        flk::setError(error, flk::fileSystemErrorWithMessage(message, ENOENT));
    }
    return url;
}

FLKExportSettingsParser::SettingsList FLKExportSettingsParser::readSettingsForKey(const std::string& key,
                                                                                  FLKError* error) const {
    auto url = settingsURL(error);
    if (!url) return {};
    if (!flk::exists(*url)) {
        reportReadError(*url, "The file does not exist.", error);
        return {};
    }
    FLKError readError;
    auto dictionary = flk::dictionaryFromJSONAtURL(*url, &readError);
    if (!dictionary) {
        reportReadError(*url, readError.fullMessage(), error);
        return {};
    }
    if (!dictionary->is_object() || !dictionary->contains(key) || !dictionary->at(key).is_array()) return {};

    SettingsList list;
    const FLKJSON& presets = dictionary->at(key);
    for (size_t index = 0; index < presets.size(); ++index) {
        try {
            list.push_back(FLKExportSettings::settingsWithDictionary(presets[index]));
        } catch (const std::invalid_argument& e) {
            reportReadError(*url, "preset " + std::to_string(index) + " under \"" + key + "\": " + e.what(), error);
        }
    }
    return list;
}

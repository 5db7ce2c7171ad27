#include "core/model/FLKTemplateManager.h"

#include <algorithm>

#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKResources.h"
#include "core/platform/FLKSerializable.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKScene.h"

namespace fs = std::filesystem;

namespace {
constexpr const char* kTemplateListName = "FLKTemplateList";

// Valid, distinct names only: the user's list is a file anyone can edit.
std::vector<std::string> namesFromJSON(const std::optional<FLKJSON>& list) {
    std::vector<std::string> names;
    if (!list || !list->is_array()) return names;
    for (const auto& entry : *list) {
        if (!entry.is_string()) continue;
        auto name = entry.get<std::string>();
        if (flk::isValidFileName(name) && std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

std::vector<std::string> without(std::vector<std::string> names, const std::string& name) {
    names.erase(std::remove(names.begin(), names.end(), name), names.end());
    return names;
}
}  // namespace

FLKTemplateManager::FLKTemplateManager(std::shared_ptr<FLKLocalStore> store)
    : localStore_(store ? std::move(store) : FLKTemplate::localStore()) {
    sanitizeTemplates();
    templates_ = createTemplates();
}

FLKTemplateManager& FLKTemplateManager::defaultManager() {
    static auto* manager = new FLKTemplateManager();
    return *manager;
}

std::optional<fs::path> FLKTemplateManager::plistURL(FLKError* error) const {
    return localStore_->localURLForPlistWithName(kTemplateListName, error);
}

// --- Names ---

std::vector<std::string> FLKTemplateManager::bundledTemplateNames() const {
    return namesFromJSON(FLKResources::propertyListNamed(kTemplateListName));
}

std::vector<std::string> FLKTemplateManager::userTemplateNames() const {
    auto url = plistURL();
    if (!url || !flk::exists(*url)) return {};
    return namesFromJSON(flk::dictionaryFromJSONAtURL(*url));
}

std::vector<std::string> FLKTemplateManager::templateNames() const {
    auto names = bundledTemplateNames();
    for (auto& name : userTemplateNames()) {
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
    }
    return names;
}

std::optional<fs::path> FLKTemplateManager::bundledTemplateNamed(const std::string& name) const {
    if (!flk::isValidFileName(name)) return std::nullopt;
    return FLKResources::URLForResource(name, kFLKFileExtensionFlickwellTemplate);
}

std::optional<fs::path> FLKTemplateManager::templateNamed(const std::string& name) const {
    if (auto bundled = bundledTemplateNamed(name)) return bundled;
    if (!flk::isValidFileName(name)) return std::nullopt;
    auto url = localStore_->createFileURLWithName(name);
    return flk::exists(url) ? std::optional(url) : std::nullopt;
}

bool FLKTemplateManager::templateExistsWithName(const std::string& name, bool* isBundled) const {
    bool bundled = bundledTemplateNamed(name).has_value();
    if (isBundled) *isBundled = bundled;
    return templateNamed(name).has_value();
}

bool FLKTemplateManager::isBundledTemplateNamed(const std::string& name) const {
    return bundledTemplateNamed(name).has_value();
}

bool FLKTemplateManager::isBundledTemplate(const FLKTemplate& aTemplate) const {
    auto bundled = bundledTemplateNamed(aTemplate.name());
    return bundled && fs::weakly_canonical(*bundled) == fs::weakly_canonical(aTemplate.URL());
}

std::shared_ptr<FLKTemplate> FLKTemplateManager::templateWithName(const std::string& name) const {
    auto it = std::find_if(templates_.begin(), templates_.end(), [&](const auto& t) { return t->name() == name; });
    return it == templates_.end() ? nullptr : *it;
}

// --- Selection ---

std::shared_ptr<FLKTemplate> FLKTemplateManager::selectedTemplate() const {
    return selectedTemplateIndex_ < templates_.size() ? templates_[selectedTemplateIndex_] : nullptr;
}

void FLKTemplateManager::selectTemplateNamed(const std::string& name) {
    auto names = templateNames();
    auto it = std::find(names.begin(), names.end(), name);
    selectedTemplateIndex_ = it == names.end() ? kNotFound : static_cast<std::size_t>(it - names.begin());
}

// --- The list ---

void FLKTemplateManager::sanitizeTemplates() {
    auto userNames = userTemplateNames();
    auto kept = userNames;
    for (const auto& name : userNames) {
        if (!templateNamed(name)) kept = without(kept, name);
    }
    if (kept != userNames) writeUserTemplateNames(kept);
}

std::vector<std::shared_ptr<FLKTemplate>> FLKTemplateManager::createTemplates() const {
    std::vector<std::shared_ptr<FLKTemplate>> templates;
    for (const auto& name : templateNames()) {
        auto url = templateNamed(name);
        if (auto aTemplate = url ? FLKTemplate::fileWithURL(*url) : nullptr) templates.push_back(std::move(aTemplate));
    }
    return templates;
}

void FLKTemplateManager::updateTemplates() {
    templates_ = createTemplates();
    FLKNotificationCenter::defaultCenter().post(kFLKTemplateManagerTemplatesDidUpdateNotification);
}

bool FLKTemplateManager::writeUserTemplateNames(const std::vector<std::string>& names, FLKError* error) const {
    auto url = plistURL(error);
    return url && flk::writeJSONToURL(FLKJSON(names), *url, error);
}

bool FLKTemplateManager::saveTemplateNameToPlist(const std::string& name) {
    auto names = without(userTemplateNames(), name);
    names.push_back(name);
    return writeUserTemplateNames(names);
}

bool FLKTemplateManager::removeTemplateNameFromPlist(const std::string& name) {
    return writeUserTemplateNames(without(userTemplateNames(), name));
}

// --- Changes ---

bool FLKTemplateManager::handleTemplateDidSave(const std::string& name, bool saved, const FLKError& error) {
    if (!saved) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    saveTemplateNameToPlist(name);
    updateTemplates();
    selectTemplateNamed(name);
    return true;
}

bool FLKTemplateManager::handleTemplateDidOverwrite(const std::string& name, bool saved, const FLKError& error) {
    if (!saved) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    updateTemplates();
    selectTemplateNamed(name);
    return true;
}

bool FLKTemplateManager::saveTemplateWithName(const std::string& name, bool overwrite) {
    FLKError error;
    auto file = FLKFile::currentFile();
    auto scene = FLKScene::currentScene();
    bool saved = false;
    if (!file || !scene) {
        error = flk::fileSystemErrorWithMessage("There is no scene to save as a template.");
    } else {
        saved = FLKTemplate::writeTemplateFromFile(file, scene, name, overwrite, &error, localStore_) != nullptr;
    }
    return overwrite ? handleTemplateDidOverwrite(name, saved, error) : handleTemplateDidSave(name, saved, error);
}

bool FLKTemplateManager::addTemplateFromURL(const fs::path& url) {
    FLKError error;
    bool copied = false;
    auto name = url.stem().string();
    if (!FLKTemplate::fileWithURL(url) || !fs::is_directory(url)) {
        error = flk::fileSystemErrorWithMessage("The file " + flk::absoluteString(url) + " is not a template.");
    } else {
        copied = localStore_->copyFileFromURL(url, name, &error).has_value();
    }
    return handleTemplateDidSave(name, copied, error);
}

bool FLKTemplateManager::renameTemplate(const std::shared_ptr<FLKTemplate>& aTemplate, const std::string& name,
                                        FLKError* error) {
    if (templateExistsWithName(name)) {
        flk::setError(error, flk::fileSystemErrorWithMessage("A template with name " + name + " already exists."));
        return false;
    }
    if (isBundledTemplate(*aTemplate)) {
        flk::setError(error, flk::fileSystemErrorWithMessage("A built-in template cannot be renamed."));
        return false;
    }
    FLKError renameError;
    if (!flk::renameItemAtURL(aTemplate->URL(), name, &renameError)) {
        flk::setError(error, renameError);
        return false;
    }
    removeTemplateNameFromPlist(aTemplate->name());
    return handleTemplateDidSave(name, true, renameError);
}

bool FLKTemplateManager::removeTemplate(const std::shared_ptr<FLKTemplate>& aTemplate) {
    FLKError error;
    bool removed = false;
    if (isBundledTemplate(*aTemplate)) {
        error = flk::fileSystemErrorWithMessage("A built-in template cannot be removed.");
    } else {
        removed = flk::removeItem(aTemplate->URL(), &error);
    }
    if (!removed) {
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    removeTemplateNameFromPlist(aTemplate->name());
    updateTemplates();
    selectedTemplateIndex_ = kNotFound;
    return true;
}

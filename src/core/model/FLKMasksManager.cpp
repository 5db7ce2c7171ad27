#include "core/model/FLKMasksManager.h"

#include <algorithm>

#include "core/model/FLKPackagePaths.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKResources.h"
#include "core/platform/FLKSerializable.h"

namespace fs = std::filesystem;

namespace {
constexpr const char* kMasksListName = "FLKMasksList";

// Valid, distinct file names only: the list is a file the user can edit.
std::vector<std::string> namesFromJSON(const FLKJSON& list) {
    std::vector<std::string> names;
    if (!list.is_array()) return names;
    for (const auto& entry : list) {
        if (!entry.is_string()) continue;
        auto name = entry.get<std::string>();
        if (flk::isValidFileName(name) && std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

void postUpdate() { FLKNotificationCenter::defaultCenter().post(kFLKMasksManagerMasksDidUpdateNotification); }
}  // namespace

FLKMasksManager::FLKMasksManager(std::shared_ptr<FLKLocalStore> store)
    : localStore_(store ? std::move(store) : FLKLocalStore::storeWithDirectory("masks", kFLKFileExtensionPNG)) {
    sanitizeMasks();
}

FLKMasksManager& FLKMasksManager::defaultManager() {
    static auto* manager = new FLKMasksManager();
    return *manager;
}

std::optional<fs::path> FLKMasksManager::plistURL(FLKError* error) const {
    return localStore_->localURLForPlistWithName(kMasksListName, error);
}

std::vector<std::string> FLKMasksManager::readList() const {
    auto url = plistURL();
    if (!url || !flk::exists(*url)) return {};
    auto json = flk::dictionaryFromJSONAtURL(*url);
    return json ? namesFromJSON(*json) : std::vector<std::string>{};
}

bool FLKMasksManager::writeList(const std::vector<std::string>& names, FLKError* error) const {
    auto url = plistURL(error);
    return url && flk::writeJSONToURL(FLKJSON(names), *url, error);
}

std::vector<std::string> FLKMasksManager::masksNames() const {
    std::lock_guard lock(mutex_);
    return readList();
}

std::vector<std::string> FLKMasksManager::builtInMasksNames() const {
    auto list = FLKResources::propertyListNamed(kMasksListName);
    return list ? namesFromJSON(*list) : std::vector<std::string>{};
}

std::vector<fs::path> FLKMasksManager::masks() const {
    std::vector<fs::path> urls;
    auto add = [&](const std::string& name) {
        auto url = maskNamed(name);
        if (url && std::find(urls.begin(), urls.end(), *url) == urls.end()) urls.push_back(*url);
    };
    for (const auto& name : builtInMasksNames()) add(name);
    for (const auto& name : masksNames()) add(name);
    return urls;
}

std::optional<fs::path> FLKMasksManager::maskNamed(const std::string& name) const {
    if (!flk::isValidFileName(name)) return std::nullopt;
    if (auto resource = FLKResources::URLForResource(name, kFLKFileExtensionPNG)) return resource;
    auto url = localStore_->createFileURLWithName(name);
    if (flk::exists(url)) return url;
    return std::nullopt;
}

void FLKMasksManager::sanitizeMasks() {
    std::lock_guard lock(mutex_);
    auto url = plistURL();
    if (!url || !flk::exists(*url)) return;
    auto names = readList();
    std::vector<std::string> kept;
    for (const auto& name : names) {
        if (maskNamed(name)) kept.push_back(name);
    }
    auto stored = flk::dictionaryFromJSONAtURL(*url);
    if (!stored || *stored != FLKJSON(kept)) writeList(kept, nullptr);
}

std::optional<fs::path> FLKMasksManager::addMaskFromURL(const fs::path& url, FLKError* error) {
    if (!flk::hasExtension(url, kFLKFileExtensionPNG)) {
        flk::setError(error, flk::fileSystemErrorWithMessage("The mask " + url.filename().string() +
                                                             " could not be added: masks are PNG pictures."));
        return std::nullopt;
    }
    std::optional<fs::path> copy;
    {
        std::lock_guard lock(mutex_);
        copy = localStore_->copyFileFromURL(url, url.stem().string(), error);
        if (!copy) return std::nullopt;
        auto names = readList();
        names.push_back(copy->stem().string());
        if (!writeList(names, error)) {
            std::error_code ignored;
            fs::remove(*copy, ignored);
            return std::nullopt;
        }
    }
    postUpdate();
    return copy;
}

bool FLKMasksManager::removeMask(const fs::path& url, FLKError* error) {
    if (!flk::isLexicallyInside(url, localStore_->directoryURL())) {
        flk::setError(error, flk::fileSystemErrorWithMessage("The mask " + url.filename().string() +
                                                             " is not one of your masks and cannot be removed."));
        return false;
    }
    {
        std::lock_guard lock(mutex_);
        if (!flk::removeItem(url, error)) return false;
        auto names = readList();
        names.erase(std::remove(names.begin(), names.end(), url.stem().string()), names.end());
        if (!writeList(names, error)) return false;
    }
    postUpdate();
    return true;
}

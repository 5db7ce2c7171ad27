#include "core/platform/FLKStore.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUniqueIdentifier.h"

namespace fs = std::filesystem;

namespace {

std::string withExtension(const std::string& name, const std::string& extension) {
    return extension.empty() ? name : name + "." + extension;
}

}  // namespace

FLKStore::FLKStore(fs::path directoryURL, std::string extension)
    : directoryURL_(std::move(directoryURL)), extension_(std::move(extension)) {}

bool FLKStore::createDirectoryIfNeeded(FLKError* error) const {
    std::error_code ec;
    if (fs::is_directory(directoryURL_, ec)) return true;
    fs::create_directories(directoryURL_, ec);
    if (ec) {
        flk::setError(error, flk::fileSystemErrorWithMessage("Could not create the folder " + directoryURL_.string() + ".",
                                                             ec.value(), ec.message()));
        return false;
    }
    return true;
}

fs::path FLKStore::createUniqueFileURL() const {
    createDirectoryIfNeeded();
    return createFileURLWithName(flk::uniqueIdentifier());
}

fs::path FLKStore::createFileURLWithName(const std::string& name) const {
    return directoryURL_ / withExtension(name, extension_);
}

std::vector<fs::path> FLKStore::fileURLs() const {
    std::vector<fs::path> urls;
    std::error_code ec;
    for (fs::directory_iterator it(directoryURL_, ec), end; !ec && it != end; it.increment(ec)) {
        const fs::path& url = it->path();
        std::string filename = url.filename().string();
        if (filename.starts_with(".")) continue;
        if (!extension_.empty() ? !flk::hasExtension(url, extension_) : url.has_extension()) continue;
        urls.push_back(url);
    }
    std::sort(urls.begin(), urls.end());
    return urls;
}

std::optional<fs::path> FLKStore::localURLForPlistWithName(const std::string& name, FLKError* error) const {
    if (!flk::isValidFileName(name)) {
        flk::setError(error, flk::fileSystemErrorWithMessage("\"" + name + "\" is not a valid property list name.", EINVAL));
        return std::nullopt;
    }
    if (!createDirectoryIfNeeded(error)) return std::nullopt;
    return directoryURL_ / withExtension(name, kFLKFileExtensionPlist);
}

std::optional<fs::path> FLKStore::copyFileFromURL(const fs::path& source, const std::string& name,
                                                  FLKError* error) const {
    if (!flk::isValidFileName(name)) {
        flk::setError(error, flk::fileSystemErrorWithMessage(
                                 "Could not copy " + source.string() + ": \"" + name + "\" is not a valid file name.",
                                 EINVAL));
        return std::nullopt;
    }
    if (!createDirectoryIfNeeded(error)) return std::nullopt;
    fs::path destination = createFileURLWithName(name);
    if (!flk::copyItem(source, destination, error)) return std::nullopt;
    return destination;
}

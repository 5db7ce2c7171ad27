#include "core/model/FLKMedia.h"

#include <algorithm>

#include "core/media/FLKImageIO.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUniqueIdentifier.h"

namespace fs = std::filesystem;

bool FLKMedia::createDirectoryIfNeeded(FLKError* error) const {
    std::error_code ec;
    if (fs::exists(fs::symlink_status(url_, ec))) return true;
    if (fs::create_directories(url_, ec) || !ec) return true;
    flk::setError(error, flk::fileSystemErrorWithMessage("The folder " + url_.string() + " could not be made.",
                                                         ec.value(), ec.message()));
    return false;
}

std::optional<fs::path> FLKMedia::addFile(const fs::path& source, FLKError* error) {
    if (!createDirectoryIfNeeded(error)) return std::nullopt;
    return flk::isImage(source) ? PNGImageURLFromImageAtURL(source, error) : copiedItemURLForItemAtURL(source, error);
}

std::optional<fs::path> FLKMedia::PNGImageURLFromImageAtURL(const fs::path& source, FLKError* error) {
    auto image = flk::readImage(source, error);
    if (!image) return std::nullopt;
    auto destination = uniqueURLWithExtension("png");
    if (!flk::writePNG(*image, destination, error)) return std::nullopt;
    return destination;
}

std::optional<fs::path> FLKMedia::copiedItemURLForItemAtURL(const fs::path& source, FLKError* error) {
    std::string extension = source.extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    auto destination = uniqueURLWithExtension(extension);
    if (!flk::copyItem(source, destination, error)) return std::nullopt;
    return destination;
}

fs::path FLKMedia::uniqueURLWithExtension(const std::string& extension) const {
    std::string name = flk::uniqueIdentifier();
    if (!extension.empty()) name += "." + extension;
    return url_ / name;
}

std::vector<fs::path> FLKMedia::allFiles() const {
    std::vector<fs::path> files;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(url_, ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec)) {
        files.push_back(it->path().lexically_relative(url_));
    }
    std::sort(files.begin(), files.end());
    return files;
}

void FLKMedia::addFilesFromMedia(const FLKMedia& other) {
    std::error_code ec;
    for (const auto& relative : other.allFiles()) {
        auto source = other.url() / relative;
        if (fs::is_directory(fs::symlink_status(source, ec))) continue;
        flk::copyItem(source, url_ / relative);
    }
}

void FLKMedia::cleanForFileReferences(const std::set<std::string>& fileNames) {
    std::error_code ec;
    std::vector<fs::path> unreferenced;
    for (auto it = fs::directory_iterator(url_, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        if (!fileNames.count(it->path().filename().string())) unreferenced.push_back(it->path());
    }
    for (const auto& path : unreferenced) fs::remove_all(path, ec);
}

#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/platform/FLKError.h"

// A document's folder of media files. Files come in under fresh unique names,
// so two imports of files called "a.png" never collide.
class FLKMedia {
public:
    explicit FLKMedia(std::filesystem::path url) : url_(std::move(url)) {}
    virtual ~FLKMedia() = default;

    static std::shared_ptr<FLKMedia> mediaWithURL(std::filesystem::path url) {
        return std::make_shared<FLKMedia>(std::move(url));
    }

    const std::filesystem::path& url() const { return url_; }

    bool createDirectoryIfNeeded(FLKError* error = nullptr) const;

    // The copy inside the folder: pictures are redrawn and stored as PNG,
    // other files are copied with their extension. nullopt with the error set
    // when the file cannot be read or copied.
    std::optional<std::filesystem::path> addFile(const std::filesystem::path& source, FLKError* error = nullptr);
    std::optional<std::filesystem::path> PNGImageURLFromImageAtURL(const std::filesystem::path& source,
                                                                   FLKError* error = nullptr);
    std::optional<std::filesystem::path> copiedItemURLForItemAtURL(const std::filesystem::path& source,
                                                                   FLKError* error = nullptr);

    // "<folder>/<new UUID>.<extension>"; no extension when it is empty.
    std::filesystem::path uniqueURLWithExtension(const std::string& extension) const;

    // Every path below the folder, relative to it, sorted.
    std::vector<std::filesystem::path> allFiles() const;
    // Copies the other folder's files to the same relative paths here;
    // files that cannot be copied are skipped.
    void addFilesFromMedia(const FLKMedia& other);
    // Removes every entry of the folder whose name is not in `fileNames`.
    void cleanForFileReferences(const std::set<std::string>& fileNames);

private:
    std::filesystem::path url_;
};

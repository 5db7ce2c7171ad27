#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/platform/FLKError.h"

// A folder of files sharing one extension (recordings, templates, masks,
// working folders of open documents). The folder is created when a location
// in it is first handed out or written, never just by making the store.
// A store holds no mutable state: any thread may use it.
class FLKStore {
public:
    FLKStore(std::filesystem::path directoryURL, std::string extension);
    virtual ~FLKStore() = default;

    const std::filesystem::path& directoryURL() const { return directoryURL_; }
    // Without the dot; empty for a store of names without extension.
    const std::string& extension() const { return extension_; }

    // A new location not yet in use: a fresh UUID with the store's extension.
    std::filesystem::path createUniqueFileURL() const;
    // "<directory>/<name>.<extension>", whether or not it exists.
    std::filesystem::path createFileURLWithName(const std::string& name) const;
    // The store's files with its extension (any letter case), sorted by name;
    // hidden files, the property lists and half-made copies are left out.
    std::vector<std::filesystem::path> fileURLs() const;

    // Where the store's property list `name` lives ("<directory>/<name>.json"),
    // with the folder created; nullopt with the error set when it cannot be.
    std::optional<std::filesystem::path> localURLForPlistWithName(const std::string& name,
                                                                  FLKError* error = nullptr) const;
    // Copies a file or folder into the store as "<name>.<extension>". The new
    // location, or nullopt with the error set (missing source, name taken,
    // invalid name, disk errors); a failed copy leaves nothing behind.
    std::optional<std::filesystem::path> copyFileFromURL(const std::filesystem::path& source,
                                                         const std::string& name, FLKError* error = nullptr) const;

    bool createDirectoryIfNeeded(FLKError* error = nullptr) const;

private:
    std::filesystem::path directoryURL_;
    std::string extension_;
};

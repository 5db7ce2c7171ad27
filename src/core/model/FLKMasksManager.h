#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/platform/FLKError.h"
#include "core/platform/FLKLocalStore.h"

inline constexpr const char* kFLKMasksManagerMasksDidUpdateNotification = "FLKMasksManagerMasksDidUpdateNotification";

// The library of mask pictures: the application's built-in masks (listed in
// the resource "FLKMasksList") and the PNG files the user added, kept in the
// local store "masks" in the order they were added. Any thread may use it.
class FLKMasksManager {
public:
    // `store` nullptr: the local store "masks" of PNG files. Drops listed
    // names whose file has gone.
    explicit FLKMasksManager(std::shared_ptr<FLKLocalStore> store = nullptr);

    static FLKMasksManager& defaultManager();

    const std::shared_ptr<FLKLocalStore>& localStore() const { return localStore_; }
    // The store's list "FLKMasksList"; nullopt with the error set when its
    // folder cannot be made.
    std::optional<std::filesystem::path> plistURL(FLKError* error = nullptr) const;

    // The user's masks in the order they were added; empty without a list.
    std::vector<std::string> masksNames() const;
    // Names of the masks the application ships.
    std::vector<std::string> builtInMasksNames() const;
    // Built-in masks first, then the user's; names that resolve to nothing are skipped.
    std::vector<std::filesystem::path> masks() const;
    // The built-in PNG of that name, else the user's file of that name.
    std::optional<std::filesystem::path> maskNamed(const std::string& name) const;

    // Copies a PNG file into the store under its own name and lists it.
    std::optional<std::filesystem::path> addMaskFromURL(const std::filesystem::path& url, FLKError* error = nullptr);
    // Deletes one of the user's masks and unlists it. Built-in masks stay.
    bool removeMask(const std::filesystem::path& url, FLKError* error = nullptr);

private:
    void sanitizeMasks();
    std::vector<std::string> readList() const;
    bool writeList(const std::vector<std::string>& names, FLKError* error) const;

    const std::shared_ptr<FLKLocalStore> localStore_;
    mutable std::mutex mutex_;  // serialises changes of the list file
};

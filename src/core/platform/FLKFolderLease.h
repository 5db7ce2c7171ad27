#pragma once

#include <filesystem>
#include <memory>

// Marks a working folder in a temporary store as in use by this process: a
// lock file beside it ("<folder>.lock") held with flock(2) while the lease
// lives. The kernel drops the lock however the process ends, so a later
// process tells a folder left by a crash from one that another process uses.
// Not thread-safe: each lease belongs to the object that owns the folder.
class FLKFolderLease {
public:
    // A lease on `folder` (which need not exist yet); nullptr when the lock
    // file cannot be made.
    static std::unique_ptr<FLKFolderLease> leaseForFolder(const std::filesystem::path& folder);
    // Gives the lease up. The lock file goes only once the folder is gone,
    // so a folder that could not be removed is still found and cleared later.
    ~FLKFolderLease();
    FLKFolderLease(const FLKFolderLease&) = delete;
    FLKFolderLease& operator=(const FLKFolderLease&) = delete;

    const std::filesystem::path& folder() const { return folder_; }

    // Whether `folder` has a lock file that no process holds: it was left by
    // a process that ended without giving its lease up.
    static bool isAbandoned(const std::filesystem::path& folder);

    // Removes the folders in `directory` whose lock file no process holds,
    // with their lock files. Folders without a lock file are not ours to
    // judge and stay.
    static void removeAbandonedFolders(const std::filesystem::path& directory);

private:
    FLKFolderLease(std::filesystem::path folder, int fd) : folder_(std::move(folder)), fd_(fd) {}

    std::filesystem::path folder_;
    int fd_;
};

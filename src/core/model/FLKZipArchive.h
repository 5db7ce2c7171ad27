#pragma once

#include <cstdint>
#include <filesystem>

#include "core/platform/FLKError.h"

inline constexpr const char* kFLKZipArchiveErrorDomain = "FLKZipArchiveErrorDomain";

// Packing and unpacking document packages. Unpacking treats the archive as
// hostile: names that could leave the destination, links, device files and
// archives that unpack to more than the limits allow are refused before
// anything is written.
class FLKZipArchive {
public:
    struct Limits {
        uint64_t maximumTotalSize = 4ull << 30;  // bytes once unpacked
        uint64_t maximumEntryCount = 10000;
    };

    enum ErrorCode : long {
        kErrorCannotOpen = 1,
        kErrorUnsafeEntry,
        kErrorTooLarge,
        kErrorCannotExtract,
        kErrorCannotCreate,
    };

    // Zips the contents of `directory` (its files and folders, named relative
    // to it; links are left out) into a new archive at `zipPath`. On failure
    // nothing is left at `zipPath`.
    static bool createZipFileAtPath(const std::filesystem::path& zipPath, const std::filesystem::path& directory,
                                    FLKError* error = nullptr);

    // Unpacks into `destination`, which must not exist yet. On failure the
    // caller owns whatever was made under `destination` and removes it.
    static bool unzipFileAtPath(const std::filesystem::path& zipPath, const std::filesystem::path& destination,
                                FLKError* error = nullptr);
    static bool unzipFileAtPath(const std::filesystem::path& zipPath, const std::filesystem::path& destination,
                                const Limits& limits, FLKError* error = nullptr);
};

#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/platform/FLKFileExtensions.h"

using FLKExportType = std::uint64_t;

inline constexpr FLKExportType FLKExportTypeMP4 = 0;
inline constexpr FLKExportType FLKExportTypeGIF = 1;

// The file extension written for an export type. Any other type is a
// programming error and stops the program, in release builds too.
inline const char* FLKFileTypeForExportType(FLKExportType type) {
    switch (type) {
        case FLKExportTypeMP4:
            return kFLKFileExtensionMP4;
        case FLKExportTypeGIF:
            return kFLKFileExtensionGIF;
        default:
            std::fprintf(stderr, "Assertion failed: (false), function FLKFileTypeForExportType, file %s, line %d.\n",
                         __FILE__, __LINE__);
            std::abort();
    }
}

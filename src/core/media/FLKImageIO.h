#pragma once

#include <filesystem>
#include <optional>

#include "core/platform/FLKError.h"
#include "core/platform/FLKImage.h"

namespace flk {
// Decodes the first picture of an image file (PNG, JPEG, WebP, BMP, TIFF, GIF,
// ...) to straight RGBA. Absent, with `error` naming the file and the problem,
// when the file is missing, unreadable, not a picture or too large.
std::optional<FLKImage> readImage(const std::filesystem::path& url, FLKError* error = nullptr);

// Encodes the image as PNG (RGBA) and writes it atomically: on failure the
// previous file, if any, is left as it was.
bool writePNG(const FLKImage& image, const std::filesystem::path& url, FLKError* error = nullptr);
}  // namespace flk

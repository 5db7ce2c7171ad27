#pragma once

#include <filesystem>
#include <string_view>

#include "core/platform/FLKError.h"

namespace flk {
// Creates missing folders, writes into a temporary file beside the target and
// renames it over the target, so readers see the old file or the new one and
// never a half-written one. Errors go to `error`; the temporary is removed on
// failure.
bool writeFileAtomically(const std::filesystem::path& url, std::string_view data, FLKError* error = nullptr);
// A unique name beside `target` ("<name>.<random>.tmp") for writing then renaming.
std::filesystem::path siblingTemporaryURL(const std::filesystem::path& target);
}  // namespace flk

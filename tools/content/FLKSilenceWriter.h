#pragma once

#include <filesystem>

#include "core/platform/FLKError.h"

// Writes `seconds` of stereo silence as MP3, the soundtrack of exports made
// without sound. The file appears whole or not at all.
bool flkWriteSilence(const std::filesystem::path& url, double seconds, FLKError* error = nullptr);

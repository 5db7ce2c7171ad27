#pragma once

#include <filesystem>

#include "core/platform/FLKError.h"

// Renders the tutorial animation with the off-screen renderer and writes it
// as an H.264 MP4; the file appears complete or not at all.
class FLKTutorialWriter {
public:
    static bool write(const std::filesystem::path& url, FLKError* error = nullptr);
};

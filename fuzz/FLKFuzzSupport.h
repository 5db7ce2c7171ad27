#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// Fuzz inputs reach our readers as files, the way a user's files do.
namespace flk::fuzz {
// A private folder for this process, made once; FLICKWELL_HOME points into
// it so stores and working folders stay out of the user's.
inline const std::filesystem::path& scratchFolder() {
    static const std::filesystem::path folder = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "flickwell-fuzz-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        ::setenv("FLICKWELL_HOME", pattern.c_str(), 1);
        ::setenv("SDL_AUDIODRIVER", "dummy", 0);
        return std::filesystem::path(pattern);
    }();
    return folder;
}

inline std::filesystem::path writeInput(const std::string& name, const uint8_t* data, size_t size) {
    const auto path = scratchFolder() / name;
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                  static_cast<std::streamsize>(size));
    return path;
}
}  // namespace flk::fuzz

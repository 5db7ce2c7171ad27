#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace flk::test {

// A folder of its own inside this test program's temporary home.
inline std::filesystem::path scratchFolder(const std::string& name) {
    auto folder = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "model" / name;
    std::filesystem::create_directories(folder);
    return folder;
}

// A 16-bit PCM WAV file of the given samples (interleaved when stereo).
inline void writeWAV(const std::filesystem::path& path, const std::vector<int16_t>& samples, int rate, int channels) {
    std::ofstream out(path, std::ios::binary);
    auto put32 = [&](uint32_t v) { out.write(reinterpret_cast<const char*>(&v), 4); };
    auto put16 = [&](uint16_t v) { out.write(reinterpret_cast<const char*>(&v), 2); };
    uint32_t dataBytes = static_cast<uint32_t>(samples.size() * 2);
    out.write("RIFF", 4);
    put32(36 + dataBytes);
    out.write("WAVEfmt ", 8);
    put32(16);
    put16(1);
    put16(static_cast<uint16_t>(channels));
    put32(static_cast<uint32_t>(rate));
    put32(static_cast<uint32_t>(rate * channels * 2));
    put16(static_cast<uint16_t>(channels * 2));
    put16(16);
    out.write("data", 4);
    put32(dataBytes);
    out.write(reinterpret_cast<const char*>(samples.data()), dataBytes);
}

}  // namespace flk::test

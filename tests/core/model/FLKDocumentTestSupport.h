#pragma once

#include <sys/stat.h>
#include <zip.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "core/media/FLKImageIO.h"
#include "core/platform/FLKUniqueIdentifier.h"

namespace flk::doctest {

inline std::filesystem::path freshFolder() {
    auto folder = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / ("case-" + flk::uniqueIdentifier());
    std::filesystem::create_directories(folder);
    return folder;
}

inline std::string readText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeText(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

inline std::filesystem::path writeTestPNG(const std::filesystem::path& path, int width = 8, int height = 4) {
    FLKImage image(width, height);
    for (size_t i = 0; i < image.rgba.size(); ++i) image.rgba[i] = static_cast<uint8_t>(i * 7);
    flk::writePNG(image, path);
    return path;
}

// Entry names of a ZIP archive, read with libzip.
inline std::set<std::string> archiveEntries(const std::filesystem::path& path) {
    std::set<std::string> names;
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (!archive) return names;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) names.insert(zip_get_name(archive, i, 0));
    zip_discard(archive);
    return names;
}

struct ArchiveEntry {
    std::string name;
    std::string data;
    unsigned mode = S_IFREG | 0644;
};

// An archive holding exactly these entries, names written as given.
inline void writeArchive(const std::filesystem::path& path, const std::vector<ArchiveEntry>& entries) {
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    for (const auto& entry : entries) {
        zip_source_t* source = zip_source_buffer(archive, entry.data.data(), entry.data.size(), 0);
        zip_int64_t index = zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8);
        zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX,
                                         static_cast<zip_uint32_t>(entry.mode) << 16);
    }
    zip_close(archive);
}

inline std::set<std::filesystem::path> folderContents(const std::filesystem::path& folder) {
    std::set<std::filesystem::path> contents;
    std::error_code ec;
    for (auto it = std::filesystem::recursive_directory_iterator(folder, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        contents.insert(it->path());
    }
    return contents;
}

}  // namespace flk::doctest

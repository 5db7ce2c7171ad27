#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "core/platform/FLKUniqueIdentifier.h"

namespace flktest {

// Sets (or unsets, with nullopt) an environment variable for one scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, std::optional<std::string> value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        if (value) ::setenv(name, value->c_str(), 1);
        else ::unsetenv(name);
    }
    ~ScopedEnvironment() {
        if (old_) ::setenv(name_, old_->c_str(), 1);
        else ::unsetenv(name_);
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

// A fresh folder inside the test's FLICKWELL_HOME.
inline std::filesystem::path freshFolder() {
    auto folder = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / ("case-" + flk::uniqueIdentifier());
    std::filesystem::create_directories(folder);
    return folder;
}

inline void writeText(const std::filesystem::path& url, const std::string& text) {
    std::filesystem::create_directories(url.parent_path());
    std::ofstream(url, std::ios::binary) << text;
}

inline std::string readText(const std::filesystem::path& url) {
    std::ifstream in(url, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

inline std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace flktest

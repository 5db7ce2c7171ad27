#include "core/platform/FLKPaths.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "core/platform/FLKAtomicFile.h"
#include "core/platform/FLKFileExtensions.h"

namespace fs = std::filesystem;

namespace {

std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string extensionOf(const fs::path& url) {
    std::string extension = url.extension().string();
    return extension.empty() ? extension : lowercase(extension.substr(1));
}

FLKError posixError(const std::string& what, const fs::path& url, int code) {
    return flk::fileSystemErrorWithMessage(what + " " + url.string() + ".", code, std::strerror(code));
}

// rename(2) replaces what is at the destination; RENAME_NOREPLACE refuses
// atomically. File systems without it fall back to check-then-rename.
int renameNoReplace(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    std::error_code ec;
    if (fs::exists(fs::symlink_status(to, ec))) return EEXIST;
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

std::optional<fs::path> absoluteEnvironmentPath(const char* variable) {
    const char* value = std::getenv(variable);
    if (!value || !*value) return std::nullopt;
    fs::path path(value);
    // Relative XDG values are invalid by that convention and are ignored.
    if (!path.is_absolute()) return std::nullopt;
    return path;
}

fs::path userHome() {
    if (auto home = absoluteEnvironmentPath("HOME")) return *home;
    struct passwd entry{};
    struct passwd* found = nullptr;
    std::array<char, 4096> buffer{};
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir)
        return found->pw_dir;
    return fs::temp_directory_path();
}

}  // namespace

namespace flk {

bool hasExtension(const fs::path& url, const std::string& extension) {
    return extensionOf(url) == lowercase(extension);
}

bool isImage(const fs::path& url) {
    static constexpr std::array<std::string_view, 9> kImageExtensions = {"png",  "jpg", "jpeg", "gif", "bmp",
                                                                         "tiff", "tif", "webp", "heic"};
    std::string extension = extensionOf(url);
    return std::find(kImageExtensions.begin(), kImageExtensions.end(), extension) != kImageExtensions.end();
}

bool isFlickwellFile(const fs::path& url) { return hasExtension(url, kFLKFileExtensionFlickwell); }

bool isFlickwellTemplateFile(const fs::path& url) { return hasExtension(url, kFLKFileExtensionFlickwellTemplate); }

bool isValidFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

bool exists(const fs::path& url) {
    std::error_code ec;
    return !url.empty() && fs::exists(url, ec);
}

FLKError fileSystemErrorWithMessage(const std::string& message, long code, const std::string& reason) {
    return FLKError::make(kFLKFileSystemErrorDomain, code, message, reason);
}

std::optional<fs::path> renameItemAtURL(const fs::path& url, const std::string& name, FLKError* error) {
    if (!isValidFileName(name)) {
        setError(error, fileSystemErrorWithMessage("Could not rename " + url.string() + ": \"" + name +
                                                   "\" is not a valid name.", EINVAL));
        return std::nullopt;
    }
    fs::path destination = url.parent_path() / (name + url.extension().string());
    if (!moveItem(url, destination, error)) return std::nullopt;
    return destination;
}

bool moveItem(const fs::path& source, const fs::path& destination, FLKError* error) {
    if (int code = renameNoReplace(source, destination)) {
        if (code == EEXIST) {
            setError(error, fileSystemErrorWithMessage("Could not move " + source.string() + ": " +
                                                       destination.string() + " already exists.", code));
        } else {
            setError(error, posixError("Could not move", source, code));
        }
        return false;
    }
    return true;
}

bool copyItem(const fs::path& source, const fs::path& destination, FLKError* error) {
    std::error_code ec;
    auto status = fs::status(source, ec);
    if (!fs::exists(status)) {
        setError(error, posixError("Could not copy", source, ENOENT));
        return false;
    }
    if (fs::exists(fs::symlink_status(destination, ec))) {
        setError(error, fileSystemErrorWithMessage("Could not copy " + source.string() + ": " +
                                                   destination.string() + " already exists.", EEXIST));
        return false;
    }
    if (destination.has_parent_path()) fs::create_directories(destination.parent_path(), ec);
    fs::path temporary = siblingTemporaryURL(destination);
    ec.clear();
    if (fs::is_directory(status)) {
        fs::copy(source, temporary, fs::copy_options::recursive | fs::copy_options::copy_symlinks, ec);
    } else {
        fs::copy_file(source, temporary, ec);
    }
    if (ec) {
        std::error_code ignored;
        fs::remove_all(temporary, ignored);
        setError(error, posixError("Could not copy " + source.string() + " to", destination, ec.value()));
        return false;
    }
    if (!moveItem(temporary, destination, error)) {
        std::error_code ignored;
        fs::remove_all(temporary, ignored);
        return false;
    }
    return true;
}

bool removeItem(const fs::path& url, FLKError* error) {
    std::error_code ec;
    if (!fs::exists(fs::symlink_status(url, ec))) {
        setError(error, posixError("Could not remove", url, ENOENT));
        return false;
    }
    fs::remove_all(url, ec);
    if (ec) {
        setError(error, posixError("Could not remove", url, ec.value()));
        return false;
    }
    return true;
}

std::optional<fs::path> homeRoot() {
    const char* value = std::getenv("FLICKWELL_HOME");
    if (!value || !*value) return std::nullopt;
    std::error_code ec;
    fs::path root = fs::absolute(fs::path(value), ec);
    return ec ? fs::path(value) : root;
}

fs::path dataHome() {
    if (auto root = homeRoot()) return *root / "data";
    if (auto xdg = absoluteEnvironmentPath("XDG_DATA_HOME")) return *xdg / "flickwell";
    return userHome() / ".local" / "share" / "flickwell";
}

fs::path configHome() {
    if (auto root = homeRoot()) return *root / "config";
    if (auto xdg = absoluteEnvironmentPath("XDG_CONFIG_HOME")) return *xdg / "flickwell";
    return userHome() / ".config" / "flickwell";
}

fs::path stateHome() {
    if (auto root = homeRoot()) return *root / "state";
    if (auto xdg = absoluteEnvironmentPath("XDG_STATE_HOME")) return *xdg / "flickwell";
    return userHome() / ".local" / "state" / "flickwell";
}

fs::path temporaryHome() {
    if (auto root = homeRoot()) return *root / "tmp";
    if (auto tmp = absoluteEnvironmentPath("TMPDIR")) return *tmp / "flickwell";
    return fs::path("/tmp") / "flickwell";
}

std::filesystem::path fileURLByAddingSuffix(const std::filesystem::path& url, const std::string& suffix) {
    auto name = url.stem().string() + " " + suffix;
    return url.parent_path() / (name + url.extension().string());
}

std::filesystem::path uniqueFileURL(const std::filesystem::path& url) {
    if (!flk::exists(url)) return url;
    for (int n = 2;; ++n) {
        auto candidate = url.parent_path() / (url.stem().string() + " " + std::to_string(n) + url.extension().string());
        if (!flk::exists(candidate)) return candidate;
    }
}

}  // namespace flk

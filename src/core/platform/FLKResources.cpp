#include "core/platform/FLKResources.h"

#include <cerrno>
#include <cstdlib>

#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKSerializable.h"

namespace fs = std::filesystem;

namespace {

std::optional<fs::path> programDirectory() {
    std::error_code ec;
    fs::path program = fs::read_symlink("/proc/self/exe", ec);
    if (ec || program.empty()) return std::nullopt;
    return program.parent_path();
}

bool isDirectory(const fs::path& path) {
    std::error_code ec;
    return fs::is_directory(path, ec);
}

}  // namespace

std::optional<fs::path> FLKResources::resourcesDirectory() {
    if (const char* explicitFolder = std::getenv("FLICKWELL_RESOURCES"); explicitFolder && *explicitFolder) {
        fs::path folder(explicitFolder);
        return isDirectory(folder) ? std::optional(folder) : std::nullopt;
    }
    auto program = programDirectory();
    if (!program) return std::nullopt;
    for (const fs::path& candidate : {*program / ".." / "share" / "flickwell", *program / "share" / "flickwell"}) {
        if (isDirectory(candidate)) return candidate.lexically_normal();
    }
    return std::nullopt;
}

std::optional<fs::path> FLKResources::URLForResource(const std::string& name, const std::string& extension) {
    if (name.empty() || name.find('/') != std::string::npos || name == "..") return std::nullopt;
    auto folder = resourcesDirectory();
    if (!folder) return std::nullopt;
    fs::path url = *folder / (extension.empty() ? name : name + "." + extension);
    if (!flk::exists(url)) return std::nullopt;
    return url;
}

std::optional<FLKJSON> FLKResources::propertyListNamed(const std::string& name, FLKError* error) {
    auto url = URLForResource(name, kFLKFileExtensionPlist);
    if (!url) {
        std::string where = resourcesDirectory() ? resourcesDirectory()->string() : std::string("(no resources folder)");
        flk::setError(error, flk::fileSystemErrorWithMessage("The resource " + name + "." + kFLKFileExtensionPlist +
                                                                 " was not found in " + where + ".",
                                                             ENOENT));
        return std::nullopt;
    }
    return flk::dictionaryFromJSONAtURL(*url, error);
}

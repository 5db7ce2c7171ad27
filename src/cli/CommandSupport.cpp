#include "cli/CommandSupport.h"

#include <cmath>
#include <cstdio>

#include "core/exporter/FLKExportPresets.h"
#include "core/model/FLKPackagePaths.h"

namespace flk::cli {

namespace {
bool liesInsideFolder(const std::filesystem::path& path, const std::filesystem::path& folder) {
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) return false;
    const auto resolvedFolder = std::filesystem::weakly_canonical(folder, ec);
    if (ec) return false;
    const auto resolvedPath = std::filesystem::weakly_canonical(path, ec);
    return !ec && flk::isLexicallyInside(resolvedPath, resolvedFolder);
}
}  // namespace

int fail(const std::string& message) {
    std::fprintf(stderr, "flickwell-cli: %s\n", message.c_str());
    return 1;
}

void warn(const std::string& message) { std::fprintf(stderr, "flickwell-cli: warning: %s\n", message.c_str()); }

std::optional<FLKSize> parseSize(const std::string& text) {
    int width = 0, height = 0;
    char separator = 0, extra = 0;
    if (std::sscanf(text.c_str(), "%d%c%d%c", &width, &separator, &height, &extra) != 3) return std::nullopt;
    if ((separator != 'x' && separator != 'X') || width <= 0 || height <= 0 || width > 16384 || height > 16384) {
        return std::nullopt;
    }
    return FLKSize{double(width), double(height)};
}

std::optional<FLKRect> parseFrame(const std::string& text) {
    double x, y, w, h;
    char extra = 0;
    if (std::sscanf(text.c_str(), "%lf,%lf,%lf,%lf%c", &x, &y, &w, &h, &extra) != 4) return std::nullopt;
    if (!std::isfinite(x) || !std::isfinite(y) || !(w > 0) || !(h > 0)) return std::nullopt;
    return FLKRect{x, y, w, h};
}

std::string sizeString(FLKSize size) { return FLKExportPresets::sizeName(size); }

std::optional<std::string> outputReplacingInput(const std::filesystem::path& output, const std::vector<Input>& inputs) {
    for (const auto& input : inputs) {
        std::error_code ec;
        // equivalent() sees through links and other spellings of one file.
        const bool same = std::filesystem::equivalent(output, input.url, ec);
        if (same || liesInsideFolder(output, input.url)) {
            return "--out " + output.string() + (same ? " is " : " lies inside ") + input.url.string() + ", given as " +
                   input.option + "; writing it would destroy that input. Choose another --out.";
        }
    }
    return std::nullopt;
}

}  // namespace flk::cli

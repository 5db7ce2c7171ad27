#include "cli/CommandSupport.h"

#include <cmath>
#include <cstdio>

namespace flk::cli {

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

std::string sizeString(FLKSize size) {
    return std::to_string(std::lround(size.width)) + "x" + std::to_string(std::lround(size.height));
}

}  // namespace flk::cli

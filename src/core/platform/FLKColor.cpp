#include "core/platform/FLKColor.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>

std::optional<std::string> FLKColor::hexadecimalValue() const {
    if (!std::isfinite(red) || !std::isfinite(green) || !std::isfinite(blue)) return std::nullopt;
    // The single-precision value just below 256: 1.0 maps to 255 and the 256
    // codes share the unit range evenly.
    constexpr double kScale = 255.99998474121094;
    auto code = [](double c) { return static_cast<unsigned>(static_cast<long long>(c * kScale)) & 0xffu; };
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x", code(red), code(green), code(blue));
    return std::string(buffer);
}

FLKColor FLKColor::colorFromHexadecimalValue(const std::string& hex) {
    size_t i = (!hex.empty() && hex[0] == '#') ? 1 : 0;
    uint64_t value = 0;
    for (; i < hex.size() && std::isxdigit(static_cast<unsigned char>(hex[i])); ++i) {
        char c = static_cast<char>(std::tolower(static_cast<unsigned char>(hex[i])));
        value = (value << 4) | static_cast<uint64_t>(c <= '9' ? c - '0' : c - 'a' + 10);
    }
    return FLKColor{((value >> 16) & 0xff) / 255.0, ((value >> 8) & 0xff) / 255.0, (value & 0xff) / 255.0, 1.0};
}

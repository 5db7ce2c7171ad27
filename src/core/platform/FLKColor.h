#pragma once

#include <optional>
#include <string>

// An sRGB colour with alpha, components in 0...1.
struct FLKColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    friend bool operator==(const FLKColor&, const FLKColor&) = default;

    static FLKColor white() { return {1, 1, 1, 1}; }
    static FLKColor black() { return {0, 0, 0, 1}; }
    static FLKColor clear() { return {0, 0, 0, 0}; }

    // "#rrggbb", lower case, alpha dropped. Absent when a component is not a
    // finite number (the colour has no RGB form).
    std::optional<std::string> hexadecimalValue() const;
    // Accepts an optional leading "#"; scanning stops at the first non-hex
    // digit and bits above the low 24 are ignored. Always opaque.
    static FLKColor colorFromHexadecimalValue(const std::string& hex);
};

namespace flk {
inline FLKColor hexColor(const std::string& hex) { return FLKColor::colorFromHexadecimalValue(hex); }
}  // namespace flk

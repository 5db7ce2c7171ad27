#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

#include <nlohmann/json.hpp>

// Keys keep their insertion order so written files read like the objects
// that wrote them.
using FLKJSON = nlohmann::ordered_json;

namespace flk {
// A JSON number as a signed 64-bit integer: nullopt for other values, for
// fractions and for numbers out of range (converting those is undefined).
inline std::optional<int64_t> int64Value(const FLKJSON& value) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<uint64_t>();
        if (number > static_cast<uint64_t>(INT64_MAX)) return std::nullopt;
        return static_cast<int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<int64_t>();
    if (!value.is_number_float()) return std::nullopt;
    const double number = value.get<double>();
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!(number >= -kLimit && number < kLimit) || number != std::trunc(number)) return std::nullopt;
    return static_cast<int64_t>(number);
}
}  // namespace flk

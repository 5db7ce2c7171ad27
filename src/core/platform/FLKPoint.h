#pragma once

#include <cmath>
#include <optional>

#include "core/platform/FLKJSON.h"

struct FLKPoint {
    double x = 0;
    double y = 0;

    friend bool operator==(const FLKPoint&, const FLKPoint&) = default;
    FLKPoint operator+(const FLKPoint& o) const { return {x + o.x, y + o.y}; }
    FLKPoint operator-(const FLKPoint& o) const { return {x - o.x, y - o.y}; }
    FLKPoint operator*(double f) const { return {x * f, y * f}; }
    FLKPoint operator/(double f) const { return {x / f, y / f}; }
    FLKPoint& operator+=(const FLKPoint& o) { x += o.x; y += o.y; return *this; }
    FLKPoint& operator-=(const FLKPoint& o) { x -= o.x; y -= o.y; return *this; }

    double length() const { return std::hypot(x, y); }
    double distanceTo(const FLKPoint& o) const { return (*this - o).length(); }

    // {"X": x, "Y": y}
    FLKJSON dictionaryRepresentation() const;
    // Absent when either key is missing or not a number.
    static std::optional<FLKPoint> fromDictionary(const FLKJSON& dictionary);
};

size_t hashValue(const FLKPoint& p);

#pragma once

#include <optional>

#include "core/platform/FLKJSON.h"
#include "core/platform/FLKPoint.h"
#include "core/platform/FLKSize.h"

// A rectangle with the null-rectangle rules of the platform the documents come
// from: the null rectangle has an infinite origin, is the identity of union,
// and every operation on it answers null (or false).
struct FLKRect {
    FLKPoint origin;
    FLKSize size;

    constexpr FLKRect() = default;
    constexpr FLKRect(double x, double y, double w, double h) : origin{x, y}, size{w, h} {}
    FLKRect(FLKPoint o, FLKSize s) : origin(o), size(s) {}

    static FLKRect null();
    static FLKRect zero() { return {}; }
    // The smallest rectangle holding both points.
    static FLKRect fromPoints(FLKPoint a, FLKPoint b);

    bool isNull() const;
    // Null, or zero width or height.
    bool isEmpty() const;

    // Negative sizes are flipped so that origin is the minimum corner.
    FLKRect standardized() const;

    double minX() const;
    double minY() const;
    double maxX() const;
    double maxY() const;
    double midX() const;
    double midY() const;
    double width() const;
    double height() const;
    FLKPoint center() const { return {midX(), midY()}; }

    FLKRect unionWith(const FLKRect& other) const;
    FLKRect intersection(const FLKRect& other) const;
    bool intersects(const FLKRect& other) const;
    // Half-open on the max edges.
    bool containsPoint(FLKPoint p) const;
    bool containsRect(const FLKRect& other) const;
    FLKRect insetBy(double dx, double dy) const;
    FLKRect offsetBy(double dx, double dy) const;

    friend bool operator==(const FLKRect& a, const FLKRect& b);

    // {"X", "Y", "Width", "Height"}
    FLKJSON dictionaryRepresentation() const;
    static std::optional<FLKRect> fromDictionary(const FLKJSON& dictionary);
};

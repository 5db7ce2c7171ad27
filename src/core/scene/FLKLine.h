#pragma once

#include <limits>

#include "core/platform/FLKPoint.h"

// The straight line a x + b y + c = 0 through two points, in doubles.
struct FLKLine {
    // Fills every field of a line through two equal points, and the slope of
    // an edge whose end points are equal.
    static constexpr double kDegenerate = -static_cast<double>(std::numeric_limits<float>::max());
    // Stands in for a zero determinant, so that parallel lines meet far away
    // instead of dividing by zero.
    static constexpr double kZeroDeterminant = 1e-07;

    double a = kDegenerate;
    double b = kDegenerate;
    double c = kDegenerate;
    double slope = kDegenerate;

    static FLKLine through(FLKPoint p1, FLKPoint p2) {
        if (p1 == p2) return {};
        return {p1.y - p2.y, p2.x - p1.x, p1.x * p2.y - p1.y * p2.x, (p2.y - p1.y) / (p2.x - p1.x)};
    }

    bool isDegenerate() const { return a == kDegenerate && b == kDegenerate && c == kDegenerate; }

    FLKPoint intersection(const FLKLine& other) const {
        double determinant = a * other.b - other.a * b;
        if (determinant == 0) determinant = kZeroDeterminant;
        return {(b * other.c - other.b * c) / determinant, (other.a * c - a * other.c) / determinant};
    }
};

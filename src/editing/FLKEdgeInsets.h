#pragma once

// Margins around a panel's content, in points.
struct FLKEdgeInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;

    friend bool operator==(const FLKEdgeInsets&, const FLKEdgeInsets&) = default;
};

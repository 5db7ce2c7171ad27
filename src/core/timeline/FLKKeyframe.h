#pragma once

#include <variant>
#include <vector>

#include "core/platform/FLKColor.h"
#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"

// A property value an animator may be handed. Sizes can be handed in but are
// not animated.
using FLKKeyframeValue = std::variant<FLKPoint, FLKRect, FLKColor, std::vector<FLKColor>, FLKSize>;

// One precomputed step of an animation: the value to show and when, in
// seconds from the animation's start.
struct FLKKeyframe {
    FLKKeyframeValue value;
    double time = 0;

    static FLKKeyframe keyframeWithValue(FLKKeyframeValue value, double time) { return {std::move(value), time}; }
};

#pragma once

#include <vector>

#include "core/platform/FLKColor.h"
#include "core/platform/FLKJSON.h"

// Stored colour arrays ("#rrggbb" strings) to colours and back, e.g. a
// gradient's "colors". Alpha does not survive the round trip.
class FLKColorArrayTransformer {
public:
    // Each string through flk::hexColor; elements that are not strings (and a
    // value that is not an array) give nothing.
    std::vector<FLKColor> transformedValue(const FLKJSON& hexStrings) const;
    // Each colour's hexadecimal value; a colour without one (a non-finite
    // component) has no element.
    FLKJSON reverseTransformedValue(const std::vector<FLKColor>& colors) const;
};

#include "core/platform/FLKColorArrayTransformer.h"

std::vector<FLKColor> FLKColorArrayTransformer::transformedValue(const FLKJSON& hexStrings) const {
    std::vector<FLKColor> colors;
    if (!hexStrings.is_array()) return colors;
    for (const auto& element : hexStrings) {
        if (element.is_string()) colors.push_back(flk::hexColor(element.get<std::string>()));
    }
    return colors;
}

FLKJSON FLKColorArrayTransformer::reverseTransformedValue(const std::vector<FLKColor>& colors) const {
    FLKJSON strings = FLKJSON::array();
    for (const FLKColor& color : colors) {
        if (auto hex = color.hexadecimalValue()) strings.push_back(*hex);
    }
    return strings;
}

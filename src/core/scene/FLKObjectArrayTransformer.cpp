#include "core/scene/FLKObjectArrayTransformer.h"

#include "core/scene/FLKObject.h"

std::vector<std::shared_ptr<FLKObject>> FLKObjectArrayTransformer::transformedValue(const FLKJSON& dictionaries) {
    std::vector<std::shared_ptr<FLKObject>> nodes;
    if (!dictionaries.is_array()) return nodes;
    for (const auto& dictionary : dictionaries) {
        if (auto node = FLKObject::newWithDictionary(dictionary)) nodes.push_back(std::move(node));
    }
    return nodes;
}

FLKJSON FLKObjectArrayTransformer::reverseTransformedValue(const std::vector<std::shared_ptr<FLKObject>>& nodes) {
    FLKJSON array = FLKJSON::array();
    for (const auto& node : nodes) {
        auto dictionary = node->serialized();
        if (!dictionary.is_null()) array.push_back(std::move(dictionary));
    }
    return array;
}

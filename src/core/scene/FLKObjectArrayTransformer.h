#pragma once

#include <memory>
#include <vector>

#include "core/platform/FLKJSON.h"

class FLKObject;

// Between stored arrays of node dictionaries and nodes. Dictionaries are
// dispatched on their "className"; ones naming no scene class are left out.
class FLKObjectArrayTransformer {
public:
    static std::vector<std::shared_ptr<FLKObject>> transformedValue(const FLKJSON& dictionaries);
    static FLKJSON reverseTransformedValue(const std::vector<std::shared_ptr<FLKObject>>& nodes);
};

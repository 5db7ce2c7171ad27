#pragma once

#include <memory>
#include <vector>

#include "core/platform/FLKRect.h"
#include "core/scene/FLKBounding.h"
#include "core/scene/FLKObject.h"

namespace flk {

// The nodes that have bounds, in order.
std::vector<std::shared_ptr<FLKBounding>> boundingObjectsArray(const std::vector<FLKObject::Ptr>& nodes);
// The union of every element's bounds, starting from the first element's (a
// null element counts as the zero rectangle); the null rectangle when empty.
FLKRect calculateBounds(const std::vector<std::shared_ptr<FLKBounding>>& objects);
// True when every node has bounds (also when there are none).
bool checkThatEveryShapeIsBounding(const std::vector<FLKObject::Ptr>& nodes);

}  // namespace flk

#include "core/model/FLKBoundingArray.h"

#include <algorithm>

namespace {
// An empty rectangle (no width or height) adds nothing to a union.
FLKRect unionIgnoringEmpty(const FLKRect& a, const FLKRect& b) {
    if (a.isEmpty() && b.isEmpty()) return FLKRect::zero();
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    return a.unionWith(b);
}
}  // namespace

namespace flk {

std::vector<std::shared_ptr<FLKBounding>> boundingObjectsArray(const std::vector<FLKObject::Ptr>& nodes) {
    std::vector<std::shared_ptr<FLKBounding>> out;
    for (const auto& node : nodes) {
        if (auto bounding = std::dynamic_pointer_cast<FLKBounding>(node)) out.push_back(std::move(bounding));
    }
    return out;
}

FLKRect calculateBounds(const std::vector<std::shared_ptr<FLKBounding>>& objects) {
    if (objects.empty()) return FLKRect::null();
    auto boundsOf = [](const std::shared_ptr<FLKBounding>& object) {
        return object ? object->bounds() : FLKRect::zero();
    };
    FLKRect bounds = boundsOf(objects.front());
    for (size_t i = 1; i < objects.size(); ++i) bounds = unionIgnoringEmpty(bounds, boundsOf(objects[i]));
    return bounds;
}

bool checkThatEveryShapeIsBounding(const std::vector<FLKObject::Ptr>& nodes) {
    return std::all_of(nodes.begin(), nodes.end(), [](const FLKObject::Ptr& node) {
        return dynamic_cast<const FLKBounding*>(node.get()) != nullptr;
    });
}

}  // namespace flk

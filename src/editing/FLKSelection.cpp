#include "editing/FLKSelection.h"

#include <algorithm>
#include <limits>

#include "core/scene/FLKPlane.h"

namespace {

FLKRect shapeBoundsOf(const FLKObject::Ptr& object) {
    auto editable = std::dynamic_pointer_cast<FLKShapeEditable>(object);
    auto shape = editable ? editable->shape() : nullptr;
    return shape ? shape->bounds() : FLKRect::zero();
}

// Union that ignores an empty operand (zero width or height), not only a null one.
FLKRect unionIgnoringEmpty(const FLKRect& a, const FLKRect& b) {
    if (b.isEmpty()) return a;
    if (a.isEmpty()) return b;
    return a.unionWith(b);
}

enum class StretchRule { none, minSide, maxSide };

struct EdgeRules {
    StretchRule horizontal;
    StretchRule vertical;
};

EdgeRules rulesForEdge(size_t edge) {
    using R = StretchRule;
    static constexpr EdgeRules table[] = {
        {R::minSide, R::minSide}, {R::none, R::minSide},    {R::maxSide, R::minSide}, {R::maxSide, R::none},
        {R::maxSide, R::maxSide}, {R::none, R::maxSide},    {R::minSide, R::maxSide}, {R::minSide, R::none},
    };
    return edge < 8 ? table[edge] : EdgeRules{R::none, R::none};
}

// One axis of r stretched inside B's extent [bOrigin, bOrigin + bLength].
void stretchAxis(StretchRule rule, double& origin, double& length, double bOrigin, double bLength, double delta) {
    double relative = (origin - bOrigin) / bLength;
    double share = length / bLength;
    switch (rule) {
        case StretchRule::maxSide:
            origin += relative * delta;
            length += share * delta;
            break;
        case StretchRule::minSide:
            origin += (1 - relative) * delta;
            length -= share * delta;
            break;
        case StretchRule::none:
            break;
    }
}

}  // namespace

void FLKSelection::addObject(const FLKObject::Ptr& object) {
    if (object && !containsObject(object)) objects_.push_back(object);
}

void FLKSelection::removeObject(const FLKObject::Ptr& object) { std::erase(objects_, object); }

void FLKSelection::removeAllObjects() { objects_.clear(); }

bool FLKSelection::containsObject(const FLKObject::Ptr& object) const {
    return std::find(objects_.begin(), objects_.end(), object) != objects_.end();
}

bool FLKSelection::hitTest(FLKPoint point) const {
    return std::any_of(objects_.begin(), objects_.end(), [&](const FLKObject::Ptr& object) {
        auto interactable = std::dynamic_pointer_cast<FLKInteractable>(object);
        return interactable && interactable->hitTest(point);
    });
}

FLKRect FLKSelection::bounds() const {
    if (objects_.empty()) {
        bounds_ = FLKRect::null();
        return bounds_;
    }
    FLKRect result = shapeBoundsOf(objects_.front());
    for (size_t i = 1; i < objects_.size(); ++i) result = unionIgnoringEmpty(result, shapeBoundsOf(objects_[i]));
    bounds_ = result;
    return bounds_;
}

FLKPoint FLKSelection::absentCenter() {
    double marker = -static_cast<double>(std::numeric_limits<float>::max());
    return {marker, marker};
}

FLKPoint FLKSelection::center() const {
    if (objects_.empty()) return absentCenter();
    FLKRect b = bounds();
    return {b.origin.x + b.size.width / 2, b.origin.y + b.size.height / 2};
}

void FLKSelection::moveBy(FLKPoint delta) {
    for (auto& object : objects_) {
        if (auto transformable = std::dynamic_pointer_cast<FLKTransformable>(object)) transformable->moveBy(delta);
    }
}

void FLKSelection::moveTo(FLKPoint point) {
    for (auto& object : objects_) {
        if (auto transformable = std::dynamic_pointer_cast<FLKTransformable>(object)) transformable->moveTo(point);
    }
}

void FLKSelection::scaleBy(double factor) { scaleBy(factor, center()); }

void FLKSelection::scaleBy(double factor, FLKPoint referencePoint) {
    for (auto& object : objects_) {
        if (auto transformable = std::dynamic_pointer_cast<FLKTransformable>(object)) {
            transformable->scaleBy(factor, referencePoint);
        }
    }
}

void FLKSelection::stretchBy(FLKPoint delta, size_t edge) {
    const FLKRect b = bounds();
    const EdgeRules rules = rulesForEdge(edge);
    for (auto& object : objects_) {
        auto editable = std::dynamic_pointer_cast<FLKShapeEditable>(object);
        auto shape = editable ? editable->shape() : nullptr;
        if (!shape) continue;
        FLKRect r = shape->bounds();
        stretchAxis(rules.horizontal, r.origin.x, r.size.width, b.origin.x, b.size.width, delta.x);
        stretchAxis(rules.vertical, r.origin.y, r.size.height, b.origin.y, b.size.height, delta.y);
        // The object's shape may be shared with readers; reshape a copy and hand it back.
        auto reshaped = shape->copy();
        reshaped->setBounds(r);
        editable->setShape(reshaped);
    }
}

void FLKSelection::setPosition(FLKPoint position) { moveBy(position - center()); }

void FLKSelection::setShape(const std::shared_ptr<FLKShape>& shape) { shape_ = shape ? shape->copy() : nullptr; }

std::shared_ptr<FLKSelection> FLKSelection::copy() const {
    auto selection = std::make_shared<FLKSelection>();
    selection->shape_ = shape_;
    selection->objects_ = objects_;
    return selection;
}

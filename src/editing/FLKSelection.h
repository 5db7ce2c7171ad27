#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"
#include "core/scene/FLKBounding.h"
#include "core/scene/FLKInteractable.h"
#include "core/scene/FLKKeyframeAnimatable.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKShapeEditable.h"
#include "core/scene/FLKTransformable.h"

// Several scene objects moved, scaled and stretched as one. Objects that are
// not shape-editable, transformable or interactable simply do not take part
// in the operations they lack. Main thread only.
class FLKSelection : public FLKInteractable,
                     public FLKTransformable,
                     public FLKShapeEditable,
                     public FLKKeyframeAnimatable,
                     public FLKBounding {
public:
    // Stretch edges go round the bounds from the min-x/min-y corner: corners
    // are even, side midpoints odd.
    static constexpr size_t kNoEdge = static_cast<size_t>(-1);

    // Membership only; adding an object twice keeps one entry.
    void addObject(const FLKObject::Ptr& object);
    void removeObject(const FLKObject::Ptr& object);
    void removeAllObjects();
    bool containsObject(const FLKObject::Ptr& object) const;
    // No particular order is promised.
    const std::vector<FLKObject::Ptr>& selectedObjects() const { return objects_; }
    size_t count() const { return objects_.size(); }

    // FLKInteractable
    bool hitTest(FLKPoint point) const override;
    bool isInteractable() const override { return true; }

    // FLKBounding: the union of the objects' shape bounds; null when empty.
    FLKRect bounds() const override;
    // The marker for "no centre" when empty.
    FLKPoint center() const;
    static FLKPoint absentCenter();

    // FLKTransformable: each call goes unchanged to every object, except
    // scaleBy(factor), which scales about the selection's centre.
    void moveBy(FLKPoint delta) override;
    void moveTo(FLKPoint point) override;
    void scaleBy(double factor) override;
    void scaleBy(double factor, FLKPoint referencePoint) override;
    // Moves the given edge by delta; every object keeps its place relative
    // to the bounds. Zero-width (height) bounds are not guarded.
    void stretchBy(FLKPoint delta, size_t edge);

    // FLKKeyframeAnimatable: the centre; setting it moves the whole group.
    FLKPoint position() const override { return center(); }
    void setPosition(FLKPoint position) override;

    // FLKShapeEditable: a shape of the selection itself, only carried along.
    std::shared_ptr<FLKShape> shape() const override { return shape_; }
    void setShape(const std::shared_ptr<FLKShape>& shape) override;

    // The same objects (own set) and shape.
    std::shared_ptr<FLKSelection> copy() const;

private:
    std::vector<FLKObject::Ptr> objects_;
    std::shared_ptr<FLKShape> shape_;
    mutable FLKRect bounds_ = FLKRect::null();
};

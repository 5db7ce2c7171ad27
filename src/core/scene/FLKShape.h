#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKVertex.h"

class FLKPlane;

// The geometry of a scene node. Every shape in a scene is a plane, so the
// value-style transforms answer new planes.
class FLKShape : public FLKSerializable {
public:
    ~FLKShape() override = default;

    // A new, independent shape of the same class and value.
    virtual std::shared_ptr<FLKPlane> copy() const = 0;

    // The corners in polygon order: top left, top right, bottom right, bottom left.
    virtual std::vector<FLKPoint> createPoints() const = 0;
    virtual std::size_t numPoints() const = 0;

    virtual bool containsPoint(FLKPoint point) const = 0;
    virtual bool isConvex() const = 0;

    virtual std::shared_ptr<FLKPlane> shapeMovedBy(FLKPoint delta) const = 0;
    virtual std::shared_ptr<FLKPlane> shapeMovedTo(FLKPoint point) const = 0;
    virtual std::shared_ptr<FLKPlane> shapeScaledBy(double factor) const = 0;
    virtual std::shared_ptr<FLKPlane> shapeScaledBy(double factor, FLKPoint referencePoint) const = 0;
    // `index` counts in the order of createPoints().
    virtual std::shared_ptr<FLKPlane> shapeBySettingPoint(FLKPoint point, std::size_t index) const = 0;

    // GPU-ready geometry; lengths are in bytes.
    virtual const FLKVertex* vertices() const = 0;
    virtual std::size_t verticesLength() const = 0;
    virtual const std::uint16_t* indices() const = 0;
    virtual std::size_t indicesLength() const = 0;

    virtual FLKRect bounds() const = 0;
    virtual void setBounds(const FLKRect& bounds) = 0;

    virtual bool isEqual(const FLKShape& other) const = 0;
    virtual std::size_t hash() const = 0;
    virtual std::string description() const = 0;
};

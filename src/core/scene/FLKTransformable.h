#pragma once

#include "core/platform/FLKPoint.h"

class FLKTransformable {
public:
    virtual ~FLKTransformable() = default;
    virtual void moveBy(FLKPoint delta) = 0;
    virtual void moveTo(FLKPoint point) = 0;
    virtual void scaleBy(double factor) = 0;
    virtual void scaleBy(double factor, FLKPoint referencePoint) = 0;
};

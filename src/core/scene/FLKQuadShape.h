#pragma once

#include "core/platform/FLKPoint.h"
#include "core/scene/FLKShape.h"

// A shape of four free corners.
class FLKQuadShape : public FLKShape {
public:
    ~FLKQuadShape() override = default;

    virtual FLKPoint topLeft() const = 0;
    virtual void setTopLeft(FLKPoint point) = 0;
    virtual FLKPoint topRight() const = 0;
    virtual void setTopRight(FLKPoint point) = 0;
    virtual FLKPoint bottomLeft() const = 0;
    virtual void setBottomLeft(FLKPoint point) = 0;
    virtual FLKPoint bottomRight() const = 0;
    virtual void setBottomRight(FLKPoint point) = 0;
};

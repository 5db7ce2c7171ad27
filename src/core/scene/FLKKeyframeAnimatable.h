#pragma once

#include "core/platform/FLKPoint.h"

class FLKKeyframeAnimatable {
public:
    virtual ~FLKKeyframeAnimatable() = default;
    virtual FLKPoint position() const = 0;
    virtual void setPosition(FLKPoint position) = 0;
};

#pragma once

#include "core/platform/FLKPoint.h"

class FLKInteractable {
public:
    virtual ~FLKInteractable() = default;
    virtual bool hitTest(FLKPoint point) const = 0;
    virtual bool isInteractable() const = 0;
};

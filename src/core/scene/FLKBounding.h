#pragma once

#include "core/platform/FLKRect.h"

class FLKBounding {
public:
    virtual ~FLKBounding() = default;
    virtual FLKRect bounds() const = 0;
};

#pragma once

#include <cstdint>

// One field of the size editor (width or height) as the solver sees it.
class FLKVideoSizeAdapter {
public:
    virtual ~FLKVideoSizeAdapter() = default;
    virtual std::int64_t integerValue() const = 0;
    virtual void setIntegerValue(std::int64_t value) = 0;
};

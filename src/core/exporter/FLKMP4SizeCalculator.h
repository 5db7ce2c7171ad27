#pragma once

#include "core/exporter/FLKVideoSizeCalculator.h"

class FLKMP4SizeCalculator : public FLKVideoSizeCalculator {
public:
    std::int64_t minHeight() const override { return 240; }
    std::int64_t maxHeight() const override { return 1920; }
};

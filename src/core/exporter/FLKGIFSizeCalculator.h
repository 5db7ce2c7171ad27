#pragma once

#include "core/exporter/FLKVideoSizeCalculator.h"

class FLKGIFSizeCalculator : public FLKVideoSizeCalculator {
public:
    std::int64_t minHeight() const override { return 128; }
    std::int64_t maxHeight() const override { return 1440; }
};

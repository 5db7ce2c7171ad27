#pragma once

#include <atomic>

#include "core/platform/FLKTimeUpdatable.h"

// Takes every time it is offered: drives an off-screen run over a fixed
// number of frames when no timeline paces it.
class FLKFixedFrameTimeSource : public FLKTimeUpdatable {
public:
    bool update(double time) override {
        currentTime_.store(time);
        return true;
    }
    double currentTime() const override { return currentTime_.load(); }

private:
    std::atomic<double> currentTime_{0};
};

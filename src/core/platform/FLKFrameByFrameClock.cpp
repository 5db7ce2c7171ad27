#include "core/platform/FLKFrameByFrameClock.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "core/platform/FLKLog.h"
#include "core/platform/FLKTimeUpdatable.h"

FLKFrameByFrameClock::FLKFrameByFrameClock(unsigned fps, unsigned numFrames) : fps_(fps), numFrames_(numFrames) {
    if (fps == 0) throw std::invalid_argument("A frame-by-frame clock needs a frame rate above 0");
}

std::uint64_t FLKFrameByFrameClock::numFramesForDuration(double duration, std::uint64_t fps) {
    constexpr double kTolerance = 1e-6;  // of a frame
    const double frames = static_cast<double>(fps) * duration + kTolerance;
    // Not-a-number, negative and absurd lengths read as no frames.
    if (!(frames >= 1) || frames >= 1.8e19) return 0;
    return static_cast<std::uint64_t>(frames);
}

void FLKFrameByFrameClock::addUpdatable(std::shared_ptr<FLKTimeUpdatable> updatable) {
    if (!updatable) return;
    std::lock_guard lock(mutex_);
    if (std::find(updatables_.begin(), updatables_.end(), updatable) == updatables_.end()) {
        updatables_.push_back(std::move(updatable));
    }
}

void FLKFrameByFrameClock::removeUpdateable(const std::shared_ptr<FLKTimeUpdatable>& updatable) {
    std::lock_guard lock(mutex_);
    std::erase(updatables_, updatable);
}

void FLKFrameByFrameClock::removeAllUpdatables() {
    std::lock_guard lock(mutex_);
    updatables_.clear();
}

bool FLKFrameByFrameClock::tick() {
    unsigned frame = currentFrame_;
    if (!propagateUpdate(static_cast<double>(frame) / fps_)) return false;
    currentFrame_ = frame + 1;
    if (frame + 1 == numFrames_) finished_ = true;
    return true;
}

bool FLKFrameByFrameClock::propagateUpdate(double time) {
    std::vector<std::shared_ptr<FLKTimeUpdatable>> snapshot;
    {
        std::lock_guard lock(mutex_);
        snapshot = updatables_;
    }
    if (snapshot.empty()) return false;
    for (const auto& updatable : snapshot) {
        if (!updatable->update(time)) {
            flk::log("Waiting");
            return false;
        }
    }
    return true;
}

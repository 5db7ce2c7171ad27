#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "core/platform/FLKUpdatableTimer.h"

class FLKTimeUpdatable;

// A clock without real time, for export: each tick offers the next frame's
// time at a fixed rate, and the frame only counts when every updatable took
// it. Ticks run on the caller's thread.
class FLKFrameByFrameClock : public FLKUpdatableTimer {
public:
    // Throws std::invalid_argument for a frame rate of 0.
    FLKFrameByFrameClock(unsigned fps, unsigned numFrames);

    // Frames in `duration` seconds at `fps`, the one count every exporter and
    // renderer uses: whole frames only, but a product a rounding error short of
    // a whole number (4.1 s x 30) counts as that number.
    static std::uint64_t numFramesForDuration(double duration, std::uint64_t fps);

    void addUpdatable(std::shared_ptr<FLKTimeUpdatable> updatable) override;
    void removeUpdateable(const std::shared_ptr<FLKTimeUpdatable>& updatable) override;
    void removeAllUpdatables() override;
    unsigned fps() const override { return fps_; }

    // Offers frame currentFrame(); advances only when it was taken.
    bool tick();
    // Whether every updatable took `time`; false with none registered.
    bool propagateUpdate(double time);

    bool isFinished() const { return finished_; }
    unsigned currentFrame() const { return currentFrame_; }
    unsigned numFrames() const { return numFrames_; }

private:
    const unsigned fps_;
    const unsigned numFrames_;
    std::atomic<unsigned> currentFrame_ = 0;  // written by the ticking thread, read anywhere
    std::atomic<bool> finished_ = false;      // written by the ticking thread, read anywhere
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<FLKTimeUpdatable>> updatables_;  // guarded by mutex_, a set in order of adding
};

#include "core/exporter/FLKFrameCalculator.h"

#include <cmath>

namespace {
// Infinite or not-a-number counts (a rate of 0) read as no frames.
std::uint64_t framesFromFloat(double value) {
    if (!(value >= 0) || value >= 1.8e19) return 0;
    return static_cast<std::uint64_t>(value);
}
}  // namespace

FLKFrameCalculator::FLKFrameCalculator(std::uint64_t fps, std::uint64_t outputFps, std::uint64_t numFrames)
    : fps_(fps),
      outputFps_(outputFps),
      numFrames_(numFrames),
      skipFrames_(static_cast<float>(fps) / static_cast<float>(outputFps)),
      outputNumFrames_(calculateOutputNumFrames()),
      outputFrameTime_(calculateOutputFrameTime()) {}

std::shared_ptr<FLKFrameCalculator> FLKFrameCalculator::calculatorWithFps(std::uint64_t fps, std::uint64_t outputFps,
                                                                          std::uint64_t numFrames) {
    return std::make_shared<FLKFrameCalculator>(fps, outputFps, numFrames);
}

std::uint64_t FLKFrameCalculator::numFramesForDuration(double duration, std::uint64_t fps) {
    return framesFromFloat(static_cast<double>(fps) * duration);
}

std::uint64_t FLKFrameCalculator::calculateOutputNumFrames() const {
    if (fps_ == outputFps_) return numFrames_;
    float frames = static_cast<float>(numFrames_) / static_cast<float>(fps_) * static_cast<float>(outputFps_);
    return framesFromFloat(std::floor(frames));
}

double FLKFrameCalculator::calculateOutputFrameTime() const { return 1.0f / static_cast<float>(outputFps_); }

bool FLKFrameCalculator::advanceWithFrameAtIndex(std::uint64_t framesWritten) {
    frameIndex_ += 1;
    if (framesWritten == 0) return true;
    if (frameIndex_ == numFrames_) return false;
    return !(static_cast<float>(framesWritten) * skipFrames_ > static_cast<float>(frameIndex_));
}

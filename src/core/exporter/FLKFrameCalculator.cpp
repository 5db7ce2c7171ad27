#include "core/exporter/FLKFrameCalculator.h"

#include <algorithm>

#include "core/platform/FLKFrameByFrameClock.h"

FLKFrameCalculator::FLKFrameCalculator(std::uint64_t fps, std::uint64_t outputFps, std::uint64_t numFrames)
    : fps_(fps),
      outputFps_(std::min(outputFps, fps)),
      numFrames_(numFrames),
      skipFrames_(static_cast<float>(fps) / static_cast<float>(outputFps_)),
      outputNumFrames_(calculateOutputNumFrames()),
      outputFrameTime_(calculateOutputFrameTime()) {}

std::shared_ptr<FLKFrameCalculator> FLKFrameCalculator::calculatorWithFps(std::uint64_t fps, std::uint64_t outputFps,
                                                                          std::uint64_t numFrames) {
    return std::make_shared<FLKFrameCalculator>(fps, outputFps, numFrames);
}

std::uint64_t FLKFrameCalculator::calculateOutputNumFrames() const {
    if (fps_ == outputFps_) return numFrames_;
    if (fps_ == 0) return 0;
    return FLKFrameByFrameClock::numFramesForDuration(static_cast<double>(numFrames_) / static_cast<double>(fps_),
                                                     outputFps_);
}

double FLKFrameCalculator::calculateOutputFrameTime() const { return 1.0f / static_cast<float>(outputFps_); }

bool FLKFrameCalculator::advanceWithFrameAtIndex(std::uint64_t framesWritten) {
    frameIndex_ += 1;
    if (framesWritten == 0) return true;
    // The renderer offers every frame of the sequence after the one the
    // writers drop; the count, not the position, ends the output.
    if (framesWritten >= outputNumFrames_) return false;
    return !(static_cast<float>(framesWritten) * skipFrames_ > static_cast<float>(frameIndex_));
}

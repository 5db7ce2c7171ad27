#pragma once

#include <cstdint>
#include <memory>

// Thins a sequence of `numFrames` frames rendered at `fps` to `outputFps`,
// one frame at a time, so that the frames written last as long as the frames
// rendered. A rate above `fps` cannot be thinned to: it is capped at `fps`.
// Belongs to one writer; not shared between threads.
class FLKFrameCalculator {
public:
    FLKFrameCalculator(std::uint64_t fps, std::uint64_t outputFps, std::uint64_t numFrames);
    static std::shared_ptr<FLKFrameCalculator> calculatorWithFps(std::uint64_t fps, std::uint64_t outputFps,
                                                                 std::uint64_t numFrames);

    std::uint64_t fps() const { return fps_; }
    std::uint64_t outputFps() const { return outputFps_; }
    std::uint64_t numFrames() const { return numFrames_; }
    float skipFrames() const { return skipFrames_; }
    std::uint64_t outputNumFrames() const { return outputNumFrames_; }
    // Seconds each written frame lasts.
    double outputFrameTime() const { return outputFrameTime_; }
    std::uint64_t frameIndex() const { return frameIndex_; }

    // Called once per frame offered, with the number of frames already
    // written: whether to write this one. The first frame offered is always
    // written, and never more than outputNumFrames() in all.
    bool advanceWithFrameAtIndex(std::uint64_t framesWritten);

    std::uint64_t calculateOutputNumFrames() const;
    double calculateOutputFrameTime() const;

private:
    std::uint64_t fps_;
    std::uint64_t outputFps_;
    std::uint64_t numFrames_;
    float skipFrames_;
    std::uint64_t outputNumFrames_;
    double outputFrameTime_;
    std::uint64_t frameIndex_ = 0;
};

#include <gtest/gtest.h>

#include <vector>

#include "core/exporter/FLKFrameCalculator.h"

namespace {
// Offers `offered` frames the way a writer does and answers the 1-based
// positions of the frames written.
std::vector<std::uint64_t> writtenFrames(FLKFrameCalculator& calculator, std::uint64_t offered) {
    std::vector<std::uint64_t> written;
    for (std::uint64_t position = 1; position <= offered; ++position) {
        if (calculator.advanceWithFrameAtIndex(written.size())) written.push_back(position);
    }
    return written;
}
}  // namespace

TEST(FLKFrameCalculator, ThinsSixtyToTwentyByTakingEveryThirdAfterTheFirst) {
    auto calculator = FLKFrameCalculator::calculatorWithFps(60, 20, 300);
    EXPECT_FLOAT_EQ(calculator->skipFrames(), 3.0f);
    EXPECT_EQ(calculator->outputNumFrames(), 100u);

    std::vector<std::uint64_t> written = writtenFrames(*calculator, 12);
    EXPECT_EQ(written, (std::vector<std::uint64_t>{1, 3, 6, 9, 12}));
    EXPECT_EQ(calculator->frameIndex(), 12u);
}

TEST(FLKFrameCalculator, EqualRatesWriteEveryFrameButTheLast) {
    FLKFrameCalculator calculator(30, 30, 90);
    EXPECT_EQ(calculator.outputNumFrames(), 90u);
    EXPECT_EQ(calculator.outputFrameTime(), static_cast<double>(1.0f / 30.0f));
    EXPECT_NEAR(calculator.outputFrameTime(), 1.0 / 30.0, 1e-7);

    std::vector<std::uint64_t> written = writtenFrames(calculator, 89);
    EXPECT_EQ(written.size(), 89u);
    EXPECT_FALSE(calculator.advanceWithFrameAtIndex(written.size()));
}

TEST(FLKFrameCalculator, OutputFrameCountIsFlooredInSinglePrecision) {
    EXPECT_EQ(FLKFrameCalculator(30, 10, 95).outputNumFrames(), 31u);
    // 126 / 30 × 15 is 63 exactly, but 4.2 is not a float: the count is 62.
    EXPECT_EQ(FLKFrameCalculator(30, 15, 126).outputNumFrames(), 62u);
    EXPECT_EQ(FLKFrameCalculator(30, 0, 90).outputNumFrames(), 0u);
}

TEST(FLKFrameCalculator, FirstFrameIsTakenEvenWhenItIsTheLast) {
    FLKFrameCalculator calculator(30, 10, 1);
    EXPECT_TRUE(calculator.advanceWithFrameAtIndex(0));
}

TEST(FLKFrameCalculator, FramesForATimelineAreTruncated) {
    EXPECT_EQ(FLKFrameCalculator::numFramesForDuration(2.5, 30), 75u);
    EXPECT_EQ(FLKFrameCalculator::numFramesForDuration(10.0, 30), 300u);
    EXPECT_EQ(FLKFrameCalculator::numFramesForDuration(1.0 / 30.0 * 7.9, 30), 7u);
    EXPECT_EQ(FLKFrameCalculator::numFramesForDuration(-1.0, 30), 0u);
}

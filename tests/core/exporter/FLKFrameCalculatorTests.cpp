#include <gtest/gtest.h>

#include <cmath>
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

TEST(FLKFrameCalculator, EqualRatesWriteEveryFrameOffered) {
    FLKFrameCalculator calculator(30, 30, 90);
    EXPECT_EQ(calculator.outputNumFrames(), 90u);
    EXPECT_EQ(calculator.outputFrameTime(), static_cast<double>(1.0f / 30.0f));
    EXPECT_NEAR(calculator.outputFrameTime(), 1.0 / 30.0, 1e-7);

    std::vector<std::uint64_t> written = writtenFrames(calculator, 90);
    EXPECT_EQ(written.size(), 90u);
    EXPECT_FALSE(calculator.advanceWithFrameAtIndex(written.size()));
}

// The exporter offers all numFrames frames (it renders one more and the
// writer drops the first): at every output rate the frames written must
// last as long as the rendered ones, a rate above the rendering one
// included (it is capped).
TEST(FLKFrameCalculator, WrittenFramesLastAsLongAsTheRenderedOnes) {
    for (std::uint64_t outputFps : {1u, 7u, 10u, 12u, 15u, 20u, 24u, 25u, 29u, 30u, 50u, 60u}) {
        for (std::uint64_t numFrames : {90u, 126u, 301u}) {
            FLKFrameCalculator calculator(30, outputFps, numFrames);
            const std::uint64_t written = writtenFrames(calculator, numFrames).size();
            const double seconds = static_cast<double>(written) / static_cast<double>(calculator.outputFps());
            EXPECT_EQ(written, calculator.outputNumFrames()) << outputFps << " fps, " << numFrames << " frames";
            EXPECT_LE(std::abs(seconds - static_cast<double>(numFrames) / 30.0), 1.0 / static_cast<double>(outputFps))
                << outputFps << " fps, " << numFrames << " frames";
        }
    }
    FLKFrameCalculator capped(30, 50, 90);
    EXPECT_EQ(capped.outputFps(), 30u);
    EXPECT_NEAR(capped.outputFrameTime(), 1.0 / 30.0, 1e-7);
}

TEST(FLKFrameCalculator, OutputFrameCountIsWholeFramesOfTheDuration) {
    EXPECT_EQ(FLKFrameCalculator(30, 10, 95).outputNumFrames(), 31u);
    // 126 / 30 × 15 is 63 exactly, although 4.2 has no exact binary form.
    EXPECT_EQ(FLKFrameCalculator(30, 15, 126).outputNumFrames(), 63u);
    EXPECT_EQ(FLKFrameCalculator(30, 0, 90).outputNumFrames(), 0u);
}

TEST(FLKFrameCalculator, FirstFrameIsTakenEvenWhenItIsTheLast) {
    FLKFrameCalculator calculator(30, 10, 1);
    EXPECT_TRUE(calculator.advanceWithFrameAtIndex(0));
}

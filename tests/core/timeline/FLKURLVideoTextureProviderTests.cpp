#include <gtest/gtest.h>

#include <atomic>
#include <cmath>

#include "FLKBufferTestSupport.h"
#include "core/gpu/FLKURLVideoTextureProvider.h"
#include "core/platform/FLKFrameByFrameClock.h"

namespace {

// A one-second numbered file played against virtual time.
struct ProviderFixture : ::testing::Test {
    std::atomic<double> now{100.0};
    std::shared_ptr<FLKFrameByFrameClock> clock = std::make_shared<FLKFrameByFrameClock>(30, 1000);
    std::shared_ptr<FLKURLVideoTextureProvider> provider = std::make_shared<FLKURLVideoTextureProvider>(
        flktest::numberedVideo(30), clock, [this] { return now.load(); });

    // Playback started at 100 s on the virtual clock.
    void at(double seconds) {
        now = 100.0 + seconds;
        provider->updateTexture();
    }
    long shownFrame() const { return std::lround(provider->shownSampleTime() * 30); }
};

TEST_F(ProviderFixture, ShowsTheFrameDueAndSkipsLateOnes) {
    provider->play();
    EXPECT_TRUE(provider->isPlaying());
    EXPECT_EQ(shownFrame(), 0);
    EXPECT_EQ(provider->numberOfTexturesShown(), 1u);

    at(4.5 / 30);
    EXPECT_EQ(shownFrame(), 5) << "the first frame not yet due is held";
    const uint64_t shown = provider->numberOfTexturesShown();
    at(4.7 / 30);
    EXPECT_EQ(provider->numberOfTexturesShown(), shown) << "a held frame is not taken twice";

    at(19.5 / 30);
    EXPECT_EQ(shownFrame(), 20);
    EXPECT_EQ(provider->numberOfTexturesShown(), shown + 1) << "late frames are skipped, not shown";

    at(1.2);
    EXPECT_FALSE(provider->isPlaying()) << "without looping the end stops playback";
}

TEST_F(ProviderFixture, LoopsFromTheStart) {
    provider->setShouldLoop(true);
    provider->play();
    at(1.2);
    EXPECT_TRUE(provider->isPlaying());
    EXPECT_EQ(provider->currentTime(), 0) << "a rewind restarts the clock";
    at(2.0 / 30);
    EXPECT_EQ(shownFrame(), 0) << "the rewound clock starts at the next update";
    now = now + 2.5 / 30;
    provider->updateTexture();
    EXPECT_EQ(shownFrame(), 3);
}

TEST_F(ProviderFixture, SeeksOnItsRenderingQueue) {
    provider->play();
    provider->setCurrentTime(0.5);
    ASSERT_TRUE(flktest::eventually([&] { return provider->currentTime() >= 0.5; }));
    provider->updateTexture();
    EXPECT_EQ(shownFrame(), 15);
}

TEST(FLKURLVideoTextureProvider, FileWithoutVideoReportsTheURL) {
    auto clock = std::make_shared<FLKFrameByFrameClock>(30, 10);
    auto provider = std::make_shared<FLKURLVideoTextureProvider>(flk::test::mediaPath("absent.mp4"), clock);
    provider->play();
    EXPECT_FALSE(provider->isPlaying());
    ASSERT_TRUE(provider->error());
    EXPECT_EQ(provider->error()->code, 4);
    EXPECT_EQ(provider->error()->localizedDescription,
              "Could not load assets for URL file://" + flk::test::mediaPath("absent.mp4").string());
}

}  // namespace

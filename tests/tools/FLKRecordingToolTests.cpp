#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetImageGenerator.h"
#include "support/FLKProgramRun.h"

namespace {
namespace fs = std::filesystem;

using flk::testing::ProgramRun;

ProgramRun runTool(const std::string& arguments) { return flk::testing::runProgram(FLK_RECORDING_TOOL_PATH, arguments); }

// Mean absolute RGB difference over rows [top, bottom).
double meanDifference(const FLKImage& a, const FLKImage& b, int top, int bottom) {
    double sum = 0;
    long count = 0;
    for (int y = top; y < bottom; ++y) {
        for (int x = 0; x < a.width; ++x, ++count) {
            for (int c = 0; c < 3; ++c) sum += std::abs(a.pixel(x, y)[c] - b.pixel(x, y)[c]);
        }
    }
    return count ? sum / (3.0 * count) : 0;
}

class FLKRecordingToolTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::path(::testing::TempDir()) / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }
    fs::path folder;
};

TEST_F(FLKRecordingToolTest, WritesAShortPortraitClipWhoseListScrolls) {
    const fs::path out = folder / "clip.mp4";
    ProgramRun result = runTool(out.string() + " --size 270x480 --duration 1 --seed 7");
    ASSERT_EQ(result.exitCode, 0) << result.output();

    auto asset = FLKAsset::assetWithPath(out.string());
    ASSERT_TRUE(asset->isReadable()) << asset->failureReason();
    EXPECT_NEAR(asset->duration(), 1.0, 0.05);
    ASSERT_TRUE(asset->hasVideo());
    EXPECT_EQ(asset->videoTrack()->naturalSize.width, 270);
    EXPECT_EQ(asset->videoTrack()->naturalSize.height, 480);
    EXPECT_NEAR(asset->videoTrack()->nominalFrameRate, 30, 0.01);
    EXPECT_EQ(asset->videoTrack()->codecName, "h264");

    // A tenth of the way in, the feed is scrolling; the status bar stays put.
    FLKAssetImageGenerator generator(asset);
    auto before = generator.copyImageAtTime(0.1), after = generator.copyImageAtTime(0.1 + 2.0 / 30);
    ASSERT_TRUE(before && after);
    const int statusBar = 480 * 24 / 640, contentTop = 480 * 80 / 640, contentBottom = 480 - 480 * 72 / 640;
    EXPECT_GT(meanDifference(*before, *after, contentTop, contentBottom), 4.0);
    EXPECT_LT(meanDifference(*before, *after, 0, statusBar - 2), 1.5);
}

TEST_F(FLKRecordingToolTest, RefusesBadRequestsAndLeavesNoFileBehind) {
    const fs::path out = folder / "clip.mp4";
    ProgramRun odd = runTool(out.string() + " --size 271x480 --duration 1");
    EXPECT_EQ(odd.exitCode, 1);
    EXPECT_NE(odd.output().find("even"), std::string::npos) << odd.output();

    ProgramRun unknown = runTool(out.string() + " --speed 2");
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_NE(unknown.output().find("--speed"), std::string::npos) << unknown.output();

    ProgramRun missingFolder = runTool((folder / "missing" / "clip.mp4").string() + " --size 64x64 --duration 0.2");
    EXPECT_EQ(missingFolder.exitCode, 1);
    EXPECT_NE(missingFolder.output().find("missing/clip.mp4"), std::string::npos) << missingFolder.output();

    EXPECT_TRUE(fs::is_empty(folder));
}

TEST(FLKTutorialVideoTest, TheBuildLeavesASquareEightSecondSplashVideo) {
    auto asset = FLKAsset::assetWithPath(FLK_TUTORIAL_VIDEO_PATH);
    ASSERT_TRUE(asset->isReadable()) << asset->failureReason();
    EXPECT_NEAR(asset->duration(), 8.0, 0.05);
    ASSERT_TRUE(asset->hasVideo());
    EXPECT_EQ(asset->videoTrack()->naturalSize.width, 720);
    EXPECT_EQ(asset->videoTrack()->naturalSize.height, 720);

    // The phone rises into view during the first second.
    FLKAssetImageGenerator generator(asset);
    auto start = generator.copyImageAtTime(0.1), later = generator.copyImageAtTime(1.0);
    ASSERT_TRUE(start && later);
    EXPECT_GT(meanDifference(*start, *later, 0, 720), 2.0);
}
}  // namespace

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "FLKMediaTestSupport.h"
#include "core/media/FLKAssetReader.h"
#include "core/media/FLKVideoEncoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixfmt.h>
}

namespace {

bool writeNumbered(FLKVideoEncoder& encoder, int frames, FLKError* error) {
    if (!encoder.start(error)) return false;
    for (int n = 0; n < frames; ++n) {
        FLKPixelBuffer frame = FLKSyntheticVideo::frameWithNumber(encoder.options().width, encoder.options().height, n);
        if (!encoder.append(frame, error)) return false;
    }
    return encoder.finish(error);
}

std::vector<uint32_t> numbersIn(const std::string& path) {
    std::vector<uint32_t> numbers;
    FLKAssetReader reader(FLKAsset::assetWithPath(path), 0, 1000);
    if (!reader.startReading()) return numbers;
    while (auto frame = reader.copyNextSampleBuffer())
        numbers.push_back(FLKSyntheticVideo::numberInLuma(frame->yPlane(), frame->yStride(), 720, 720).value_or(~0u));
    return numbers;
}

std::vector<uint32_t> sequence(uint32_t count) {
    std::vector<uint32_t> numbers(count);
    for (uint32_t i = 0; i < count; ++i) numbers[i] = i;
    return numbers;
}

TEST(FLKVideoEncoder, WritesHighProfileBT709AtTheFrameRate) {
    std::string path = flk::test::mediaPath("encoded.mp4").string();
    FLKVideoEncoder encoder(path, {.width = 256, .height = 144, .fps = 30, .preset = "veryfast"});
    FLKError error;
    ASSERT_TRUE(writeNumbered(encoder, 45, &error)) << error.fullMessage();
    EXPECT_EQ(encoder.framesAppended(), 45u);

    flk::test::StreamFacts video = flk::test::probeStream(path, AVMEDIA_TYPE_VIDEO);
    EXPECT_EQ(video.codec, "h264");
    EXPECT_EQ(video.profile, FF_PROFILE_H264_HIGH);
    EXPECT_EQ(video.pixelFormat, "yuv420p");
    EXPECT_EQ(video.colorPrimaries, AVCOL_PRI_BT709);
    EXPECT_EQ(video.colorTransfer, AVCOL_TRC_BT709);
    EXPECT_EQ(video.colorSpace, AVCOL_SPC_BT709);
    EXPECT_EQ(video.colorRange, AVCOL_RANGE_MPEG);
    EXPECT_DOUBLE_EQ(video.fps, 30.0);
    EXPECT_NEAR(video.duration, 1.5, 1e-6);
    EXPECT_EQ(video.packets, 45);

    FLKAsset asset(path);
    EXPECT_NEAR(asset.duration(), 1.5, 1e-3);
    EXPECT_FLOAT_EQ(asset.videoTrack()->nominalFrameRate, 30.0f);
    EXPECT_EQ(numbersIn(path), sequence(45));
}

// x264 writes the settings it ran with into the stream.
std::string encoderSettingsIn(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const auto at = bytes.find("options: ");
    return at == std::string::npos ? std::string() : bytes.substr(at, bytes.find('\0', at) - at);
}

TEST(FLKVideoEncoder, TheLookaheadIsThePresetsUnlessBounded) {
    for (int lookahead : {-1, 10}) {
        std::string path = flk::test::mediaPath("lookahead.mp4").string();
        FLKVideoEncoder encoder(path, {.width = 128, .height = 72, .lookaheadFrames = lookahead});
        FLKError error;
        ASSERT_TRUE(writeNumbered(encoder, 12, &error)) << error.fullMessage();
        const std::string settings = encoderSettingsIn(path);
        EXPECT_NE(settings.find(lookahead < 0 ? " rc_lookahead=40 " : " rc_lookahead=10 "), std::string::npos)
            << settings;
        EXPECT_NE(settings.find(" bframes=3 "), std::string::npos) << "the rest stays the preset's: " << settings;
    }
}

TEST(FLKVideoEncoder, ThreadedEncodingKeepsEveryFrameInOrder) {
    std::string path = flk::test::mediaPath("threaded.mp4").string();
    FLKVideoEncoder encoder(path, {.width = 192, .height = 108, .fps = 25, .preset = "ultrafast", .threaded = true,
                                   .queueCapacity = 2});
    FLKError error;
    ASSERT_TRUE(writeNumbered(encoder, 60, &error)) << error.fullMessage();
    EXPECT_EQ(flk::test::probeStream(path, AVMEDIA_TYPE_VIDEO).packets, 60);
    EXPECT_EQ(numbersIn(path), sequence(60));
}

TEST(FLKVideoEncoder, RejectsBadSizesAndLeavesNoFile) {
    std::string odd = flk::test::mediaPath("odd.mp4").string();
    FLKVideoEncoder oddEncoder(odd, {.width = 101, .height = 100});
    FLKError error;
    EXPECT_FALSE(oddEncoder.start(&error));
    EXPECT_NE(error.fullMessage().find(odd), std::string::npos) << error.fullMessage();
    EXPECT_FALSE(std::filesystem::exists(odd));

    for (bool threaded : {false, true}) {
        std::string path = flk::test::mediaPath(threaded ? "mismatch-threaded.mp4" : "mismatch.mp4").string();
        FLKError appendError;
        {
            FLKVideoEncoder encoder(path, {.width = 64, .height = 64, .preset = "ultrafast", .threaded = threaded});
            ASSERT_TRUE(encoder.start());
            ASSERT_TRUE(encoder.append(FLKPixelBuffer(64, 64)));
            // The threaded writer reports the failure at a later call.
            bool ok = encoder.append(FLKPixelBuffer(32, 64), &appendError);
            ok = ok && encoder.finish(&appendError);
            EXPECT_FALSE(ok);
            EXPECT_NE(appendError.fullMessage().find("32x64"), std::string::npos) << appendError.fullMessage();
        }
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST(FLKVideoEncoder, MissingFolderAndAbandonedWriterLeaveNothing) {
    std::string nowhere = flk::test::mediaPath("missing-folder/out.mp4").string();
    FLKVideoEncoder encoder(nowhere, {.width = 64, .height = 64});
    FLKError error;
    EXPECT_FALSE(encoder.start(&error));
    EXPECT_NE(error.fullMessage().find(nowhere), std::string::npos);

    std::string abandoned = flk::test::mediaPath("abandoned.mp4").string();
    {
        FLKVideoEncoder unfinished(abandoned, {.width = 64, .height = 64, .preset = "ultrafast"});
        ASSERT_TRUE(unfinished.start());
        ASSERT_TRUE(unfinished.append(FLKPixelBuffer(64, 64)));
        EXPECT_TRUE(std::filesystem::exists(abandoned));
    }
    EXPECT_FALSE(std::filesystem::exists(abandoned));
}

}  // namespace

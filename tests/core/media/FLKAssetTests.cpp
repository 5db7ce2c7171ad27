#include <gtest/gtest.h>

#include <fstream>

#include "FLKMediaTestSupport.h"
#include "core/media/FLKAsset.h"

extern "C" {
#include <libavutil/frame.h>
}
#include "core/media/FLKVideoFrame.h"

namespace {

using flk::test::syntheticVideo;

FLKSyntheticVideo::Options clip(int frames, int fps = 30) {
    FLKSyntheticVideo::Options options;
    options.frameCount = frames;
    options.fps = fps;
    return options;
}

TEST(FLKAsset, DurationFrameRateAndSizeOfVideo) {
    FLKAsset ten(syntheticVideo("ten.mp4", clip(300)));
    FLKAsset tenPointOne(syntheticVideo("ten-point-one.mp4", clip(303)));
    ASSERT_TRUE(ten.isReadable()) << ten.failureReason();
    EXPECT_NEAR(ten.duration(), 10.0, 1e-3);
    EXPECT_NEAR(tenPointOne.duration(), 10.1, 1e-3);
    ASSERT_TRUE(ten.hasVideo());
    EXPECT_FALSE(ten.hasAudio());
    EXPECT_FLOAT_EQ(ten.videoTrack()->nominalFrameRate, 30.0f);
    EXPECT_EQ(ten.videoTrack()->naturalSize, (FLKSize{320, 240}));
    EXPECT_TRUE(ten.videoTrack()->orientation.isUpright());
    EXPECT_EQ(ten.videoTrack()->codecName, "h264");

    FLKAsset film(syntheticVideo("film.mp4", clip(48, 24)));
    EXPECT_FLOAT_EQ(film.videoTrack()->nominalFrameRate, 24.0f);
    EXPECT_NEAR(film.duration(), 2.0, 1e-3);
}

TEST(FLKAsset, OrientationComesFromTheDisplayMatrix) {
    for (int degrees : {90, 180, 270}) {
        for (bool mirrored : {false, true}) {
            FLKSyntheticVideo::Options options = clip(5);
            options.orientation = FLKVideoOrientation(degrees, mirrored);
            FLKAsset asset(syntheticVideo("rotated" + std::to_string(degrees) + (mirrored ? "m" : "") + ".mp4", options));
            ASSERT_TRUE(asset.hasVideo()) << asset.failureReason();
            EXPECT_EQ(asset.videoTrack()->orientation.rotationDegrees(), degrees);
            EXPECT_EQ(asset.videoTrack()->orientation.isMirrored(), mirrored);
            EXPECT_EQ(asset.videoTrack()->naturalSize, (FLKSize{320, 240}));
            EXPECT_EQ(asset.videoTrack()->presentationSize(),
                      degrees == 180 ? (FLKSize{320, 240}) : (FLKSize{240, 320}));
        }
    }
}

TEST(FLKAsset, AudioOnlyAndVideoWithSound) {
    std::string tone = flk::test::mediaPath("tone.m4a").string();
    FLKError error;
    ASSERT_TRUE(FLKSyntheticVideo::writeTone(tone, 3.0, 440, &error)) << error.fullMessage();
    FLKAsset audio(tone);
    EXPECT_TRUE(audio.isReadable()) << audio.failureReason();
    EXPECT_TRUE(audio.hasAudio());
    EXPECT_FALSE(audio.hasVideo());
    EXPECT_NEAR(audio.duration(), 3.0, 0.05);
    EXPECT_EQ(audio.audioTrack()->codecName, "aac");

    FLKSyntheticVideo::Options options = clip(60);
    options.withTone = true;
    FLKAsset both(syntheticVideo("with-tone.mp4", options));
    EXPECT_TRUE(both.hasVideo());
    EXPECT_TRUE(both.hasAudio());
    EXPECT_NEAR(both.videoTrack()->duration, 2.0, 1e-3);
}

TEST(FLKAsset, UnreadableFilesGiveZeroDurationAndAReason) {
    std::string garbage = flk::test::mediaPath("garbage.mp4").string();
    std::ofstream(garbage) << std::string(4096, 'x');
    std::string empty = flk::test::mediaPath("empty.mp4").string();
    std::ofstream{empty};
    std::string missing = flk::test::mediaPath("no-such-file.mp4").string();
    // A recording cut short before its index was written.
    std::string truncated = flk::test::mediaPath("truncated.mp4").string();
    {
        std::ifstream source(syntheticVideo("ten.mp4", clip(300)), std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(source)), std::istreambuf_iterator<char>());
        std::ofstream(truncated, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    }
    for (const std::string& path : {garbage, empty, missing, truncated}) {
        FLKAsset asset(path);
        EXPECT_FALSE(asset.isReadable()) << path;
        EXPECT_EQ(asset.duration(), 0) << path;
        EXPECT_FALSE(asset.hasVideo()) << path;
        EXPECT_NE(asset.failureReason().find(path), std::string::npos) << asset.failureReason();
    }
}

TEST(FLKAsset, TenBitVideoIsProbed) {
    FLKSyntheticVideo::Options options = clip(10);
    options.pixelFormat = "yuv420p10le";
    FLKAsset asset(syntheticVideo("ten-bit.mp4", options));
    ASSERT_TRUE(asset.hasVideo()) << asset.failureReason();
    EXPECT_EQ(asset.videoTrack()->bitsPerComponent, 10);
}

TEST(FLKVideoFrame, ColourTagsAndTheirDefaults) {
    auto frameOf = [](int height, AVColorSpace space, AVColorRange range) {
        AVFrame* frame = av_frame_alloc();
        frame->width = 16;
        frame->height = height;
        frame->format = AV_PIX_FMT_NV12;
        av_frame_get_buffer(frame, 0);
        frame->colorspace = space;
        frame->color_range = range;
        auto result = std::make_shared<FLKVideoFrame>(frame, 1.5);
        av_frame_free(&frame);
        return result;
    };
    EXPECT_EQ(frameOf(1080, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED)->colorMatrix(), FLKColorMatrix::BT709);
    EXPECT_EQ(frameOf(720, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED)->colorMatrix(), FLKColorMatrix::BT709);
    EXPECT_EQ(frameOf(480, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED)->colorMatrix(), FLKColorMatrix::BT601);
    EXPECT_EQ(frameOf(1080, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG)->colorMatrix(), FLKColorMatrix::BT601);
    EXPECT_EQ(frameOf(480, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG)->colorMatrix(), FLKColorMatrix::BT709);
    EXPECT_EQ(frameOf(480, AVCOL_SPC_BT709, AVCOL_RANGE_UNSPECIFIED)->colorRange(), FLKColorRange::Limited);
    auto full = frameOf(480, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG);
    EXPECT_EQ(full->colorRange(), FLKColorRange::Full);
    EXPECT_TRUE(full->isNV12());
    EXPECT_EQ(full->pixelFormatName(), "nv12");
    EXPECT_EQ(full->presentationTime(), 1.5);
    EXPECT_NE(full->yPlane(), nullptr);
    EXPECT_EQ(full->uvPlane(), full->avFrame()->data[1]);
    EXPECT_GE(full->uvStride(), 16);
}

}  // namespace

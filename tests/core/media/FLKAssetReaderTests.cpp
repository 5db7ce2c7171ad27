#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <thread>

#include "FLKMediaTestSupport.h"
#include "core/media/FLKAssetImageGenerator.h"
#include "core/media/FLKAssetReader.h"
#include "core/media/FLKVideoDecoder.h"

extern "C" {
#include <libavutil/display.h>
}

namespace {

using flk::test::syntheticVideo;

// Ten seconds at 30 fps with B-frames and a single key frame, so that a read
// starting mid-clip has to decode from far before its start.
std::shared_ptr<FLKAsset> tenSecondAsset() {
    FLKSyntheticVideo::Options options;
    options.frameCount = 300;
    options.preset = "veryfast";
    return FLKAsset::assetWithPath(syntheticVideo("reader-ten.mp4", options));
}

struct ReadFrame {
    double time;
    std::optional<uint32_t> number;
};

std::vector<ReadFrame> readAll(FLKAssetReader& reader) {
    std::vector<ReadFrame> frames;
    if (!reader.startReading()) return frames;
    while (auto frame = reader.copyNextSampleBuffer()) {
        EXPECT_TRUE(frame->isNV12());
        EXPECT_EQ(frame->width(), 720);
        EXPECT_EQ(frame->height(), 720);
        frames.push_back({frame->presentationTime(),
                          FLKSyntheticVideo::numberInLuma(frame->yPlane(), frame->yStride(), 720, 720)});
    }
    return frames;
}

TEST(FLKAssetReader, StartsOnTheFrameShownAtTheStartAndStopsBeforeTheEnd) {
    FLKAssetReader reader(tenSecondAsset(), 3.5, 4.5);
    std::vector<ReadFrame> frames = readAll(reader);
    EXPECT_EQ(reader.status(), FLKAssetReaderStatus::Completed);
    ASSERT_EQ(frames.size(), 30u);
    for (size_t i = 0; i < frames.size(); ++i) {
        ASSERT_TRUE(frames[i].number.has_value()) << "frame " << i;
        EXPECT_EQ(*frames[i].number, 105 + i);
        EXPECT_NEAR(frames[i].time, (105.0 + i) / 30.0, 1e-3);
        if (i) {
            EXPECT_GT(frames[i].time, frames[i - 1].time);
        }
    }
    EXPECT_LT(frames.back().time, 4.5);
}

TEST(FLKAssetReader, StartBetweenFramesGivesTheFrameOnScreen) {
    FLKAssetReader reader(tenSecondAsset(), 2.01, 2.1);
    std::vector<ReadFrame> frames = readAll(reader);
    ASSERT_EQ(frames.size(), 3u);  // 60 (on screen at 2.01), 61, 62
    EXPECT_EQ(frames[0].number, 60u);
    EXPECT_EQ(frames[2].number, 62u);
}

TEST(FLKAssetReader, WholeClipAndTheRangesAtItsEdges) {
    FLKAssetReader whole(tenSecondAsset(), 0, 100);
    std::vector<ReadFrame> all = readAll(whole);
    ASSERT_EQ(all.size(), 300u);
    EXPECT_EQ(all.front().number, 0u);
    EXPECT_EQ(all.back().number, 299u);

    FLKAssetReader tail(tenSecondAsset(), 9.95, 12);
    std::vector<ReadFrame> last = readAll(tail);
    ASSERT_EQ(last.size(), 2u);
    EXPECT_EQ(last.back().number, 299u);

    FLKAssetReader past(tenSecondAsset(), 20, 25);
    EXPECT_TRUE(readAll(past).empty());
    EXPECT_EQ(past.status(), FLKAssetReaderStatus::Completed);
}

TEST(FLKAssetReader, CancelStopsDeliveryFromAnotherThread) {
    FLKAssetReader reader(tenSecondAsset(), 0, 10);
    ASSERT_TRUE(reader.startReading());
    ASSERT_NE(reader.copyNextSampleBuffer(), nullptr);
    std::thread([&] { reader.cancelReading(); }).join();
    EXPECT_EQ(reader.copyNextSampleBuffer(), nullptr);
    EXPECT_EQ(reader.status(), FLKAssetReaderStatus::Cancelled);
}

TEST(FLKAssetReader, BadInputFailsWithTheFileNamed) {
    std::string garbage = flk::test::mediaPath("reader-garbage.mp4").string();
    std::ofstream(garbage) << std::string(1000, '\x42');
    FLKAssetReader reader(FLKAsset::assetWithPath(garbage), 0, 1);
    EXPECT_FALSE(reader.startReading());
    EXPECT_EQ(reader.status(), FLKAssetReaderStatus::Failed);
    EXPECT_NE(reader.error().fullMessage().find(garbage), std::string::npos) << reader.error().fullMessage();
    EXPECT_EQ(reader.copyNextSampleBuffer(), nullptr);

    std::string tone = flk::test::mediaPath("reader-tone.m4a").string();
    ASSERT_TRUE(FLKSyntheticVideo::writeTone(tone, 1.0));
    FLKAssetReader audioOnly(FLKAsset::assetWithPath(tone), 0, 1);
    EXPECT_FALSE(audioOnly.startReading());
    EXPECT_NE(audioOnly.error().failureReason.find("no video"), std::string::npos) << audioOnly.error().failureReason;
}

TEST(FLKAssetReader, DamagedDataLosesFramesNotTheClip) {
    std::ifstream source(tenSecondAsset()->path(), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(source)), std::istreambuf_iterator<char>());
    // The frames come first in this file and its index last: damage frames only.
    for (size_t i = bytes.size() / 5; i < bytes.size() / 3; i += 7) bytes[i] = static_cast<char>(bytes[i] ^ 0x5a);
    std::string damaged = flk::test::mediaPath("reader-damaged.mp4").string();
    std::ofstream(damaged, std::ios::binary) << bytes;

    FLKAssetReader reader(FLKAsset::assetWithPath(damaged), 0, 10);
    std::vector<ReadFrame> frames = readAll(reader);
    EXPECT_EQ(reader.status(), FLKAssetReaderStatus::Completed) << reader.error().fullMessage();
    EXPECT_GT(frames.size(), 100u);
    for (size_t i = 1; i < frames.size(); ++i) EXPECT_GT(frames[i].time, frames[i - 1].time);
}

TEST(FLKAssetReader, TenBitSourcesDecode) {
    FLKSyntheticVideo::Options tenBit;
    tenBit.frameCount = 20;
    tenBit.pixelFormat = "yuv420p10le";
    FLKAssetReader deep(FLKAsset::assetWithPath(syntheticVideo("reader-10bit.mp4", tenBit)), 0.5, 1);
    std::vector<ReadFrame> frames = readAll(deep);
    ASSERT_EQ(frames.size(), 5u);
    EXPECT_EQ(frames[0].number, 15u);
}

// A phone's recording: the picture stored on its side, upright only through
// the display matrix.
std::shared_ptr<FLKAsset> turnedRecording(const FLKVideoOrientation& orientation) {
    FLKSyntheticVideo::Options options;
    options.frameCount = 10;
    options.width = 320;
    options.height = 192;
    options.orientation = orientation;
    return FLKAsset::assetWithPath(syntheticVideo("reader-turned-" + std::to_string(orientation.rotationDegrees()) +
                                                      (orientation.isMirrored() ? "-mirrored" : "") + ".mp4",
                                                  options));
}

const std::vector<FLKVideoOrientation> kTurns = {{90, false}, {180, false}, {270, false}, {90, true}, {0, true}};

TEST(FLKAssetReader, TurnedRecordingsComeOutUpright) {
    for (const FLKVideoOrientation& orientation : kTurns) {
        FLKAssetReader reader(turnedRecording(orientation), 0, 1);
        std::vector<ReadFrame> frames = readAll(reader);
        ASSERT_EQ(frames.size(), 10u);
        for (size_t i = 0; i < frames.size(); ++i)
            EXPECT_EQ(frames[i].number, i) << orientation.rotationDegrees() << (orientation.isMirrored() ? " mirrored" : "");
    }
}

// Checks the test recordings themselves against the display matrix as
// FFmpeg reads it, so that the reader and the writer cannot agree on a wrong
// turn: a quarter turn clockwise shows the stored picture's left column,
// bottom up, as its top row; a mirror shows the stored top row right to left.
TEST(FLKAssetReader, TurnedTestRecordingsAreStoredAsPhonesStoreThem) {
    struct Case {
        FLKVideoOrientation orientation;
        double ffmpegAngle;  // counter-clockwise, as FFmpeg reports it
        bool swaps;
    };
    for (const Case& c : {Case{{90, false}, -90.0, true}, Case{{0, true}, -180.0, false}}) {
        auto asset = turnedRecording(c.orientation);
        std::string reason;
        flk::media::InputContext input = flk::media::openInput(asset->path(), &reason);
        ASSERT_TRUE(input) << reason;
        const auto* matrix = reinterpret_cast<const int32_t*>(
            av_stream_get_side_data(input->streams[0], AV_PKT_DATA_DISPLAYMATRIX, nullptr));
        ASSERT_NE(matrix, nullptr);
        EXPECT_NEAR(av_display_rotation_get(matrix), c.ffmpegAngle, 1e-6);
        // FFmpeg's own tool flips a matrix of -180 degrees left to right when its first entry is negative.
        if (!c.swaps) {
            EXPECT_TRUE(matrix[0] < 0 && matrix[4] > 0);
        }

        auto decoder = FLKVideoDecoder::open(asset->path(), &reason);
        ASSERT_TRUE(decoder) << reason;
        ASSERT_TRUE(decoder->seekTo(0.11));
        double time = 0;
        const AVFrame* stored = decoder->nextFrame(&time);
        ASSERT_NE(stored, nullptr);
        ASSERT_EQ(stored->width, 320);
        ASSERT_EQ(stored->height, 192);
        const int shownWidth = c.swaps ? stored->height : stored->width;
        const int shownHeight = c.swaps ? stored->width : stored->height;
        std::vector<uint8_t> shown(static_cast<size_t>(shownWidth) * shownHeight);
        for (int y = 0; y < shownHeight; ++y) {
            for (int x = 0; x < shownWidth; ++x) {
                const int storedX = c.swaps ? y : stored->width - 1 - x;
                const int storedY = c.swaps ? stored->height - 1 - x : y;
                shown[static_cast<size_t>(y) * shownWidth + x] =
                    stored->data[0][static_cast<ptrdiff_t>(storedY) * stored->linesize[0] + storedX];
            }
        }
        EXPECT_EQ(FLKSyntheticVideo::numberInLuma(shown.data(), shownWidth, shownWidth, shownHeight), 3u);
    }
}

TEST(FLKAssetReader, ColourTagsFollowTheSource) {
    FLKAssetReader reader(tenSecondAsset(), 0, 0.1);
    ASSERT_TRUE(reader.startReading());
    auto frame = reader.copyNextSampleBuffer();
    ASSERT_NE(frame, nullptr);
    // Tagged BT.709 by the encoder although only 240 lines tall.
    EXPECT_EQ(frame->colorMatrix(), FLKColorMatrix::BT709);
    EXPECT_EQ(frame->colorRange(), FLKColorRange::Limited);
}

std::optional<uint32_t> numberInImage(const FLKImage& image) {
    std::vector<uint8_t> green(static_cast<size_t>(image.width) * image.height);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) green[static_cast<size_t>(y) * image.width + x] = image.pixel(x, y)[1];
    return FLKSyntheticVideo::numberInLuma(green.data(), image.width, image.width, image.height);
}

TEST(FLKAssetImageGenerator, PicturesAtTimesWithTheirActualTimes) {
    FLKAssetImageGenerator generator(tenSecondAsset());
    generator.setMaximumSize({160, 160});
    std::vector<double> requested = {0, 1.0, 2.51, 9.99, 12};
    std::vector<double> actual;
    std::vector<std::optional<uint32_t>> numbers;
    std::vector<bool> failed;
    generator.generateImagesForTimes(requested, [&](double, const FLKImage* image, double time, const FLKError* error) {
        failed.push_back(image == nullptr);
        if (!image) {
            EXPECT_NE(error, nullptr);
            return;
        }
        EXPECT_EQ(image->width, 160);
        EXPECT_EQ(image->height, 120);
        actual.push_back(time);
        numbers.push_back(numberInImage(*image));
    });
    ASSERT_EQ(failed, (std::vector<bool>{false, false, false, false, true}));
    std::vector<uint32_t> expected = {0, 30, 75, 299};
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i] / 30.0, 1e-3);
        EXPECT_EQ(numbers[i], expected[i]);
    }
    generator.setMaximumSize({});
    double time = -1;
    auto full = generator.copyImageAtTime(5.0, &time);
    ASSERT_TRUE(full.has_value());
    EXPECT_EQ(full->width, 320);
    EXPECT_NEAR(time, 5.0, 1e-3);
}

TEST(FLKAssetImageGenerator, TurnedRecordingsGiveUprightPictures) {
    for (const FLKVideoOrientation& orientation : kTurns) {
        auto asset = turnedRecording(orientation);
        const FLKSize shown = asset->videoTrack()->presentationSize();
        EXPECT_EQ(shown, orientation.swapsSides() ? (FLKSize{192, 320}) : (FLKSize{320, 192}));
        FLKAssetImageGenerator generator(asset);
        generator.setMaximumSize({320, 320});
        auto image = generator.copyImageAtTime(0.21);
        ASSERT_TRUE(image.has_value());
        EXPECT_EQ(image->width, orientation.swapsSides() ? 192 : 320);
        EXPECT_EQ(image->height, orientation.swapsSides() ? 320 : 192);
        EXPECT_EQ(numberInImage(*image), 6u) << orientation.rotationDegrees()
                                             << (orientation.isMirrored() ? " mirrored" : "");
    }
}

}  // namespace

// Pictures asked for in time order decode on from the last one instead of
// seeking: they must be the frames a seek for each time alone gives, across
// still stretches and after going back. Draft pictures may be a frame or two early.
TEST(FLKAssetImageGenerator, PicturesInTimeOrderAreThoseSoughtOneByOne) {
    const FLKSyntheticVideo::Options options = flk::test::recordingWithStillScreens();
    auto asset = FLKAsset::assetWithPath(syntheticVideo("generator-still.mp4", options));
    const std::vector<double> frameTimes = FLKSyntheticVideo::frameTimesOf(options);
    FLKAssetImageGenerator inOrder(asset);
    FLKAssetImageGenerator draft(asset);
    draft.setDraft(true);
    for (FLKAssetImageGenerator* generator : {&inOrder, &draft}) generator->setMaximumSize({160, 160});
    for (double time : {0.21, 0.22, 0.26, 0.51, 1.2, 1.6, 3.0, 4.01, 4.02, 4.31, 0.31, 1.54}) {
        FLKAssetImageGenerator alone(asset);
        alone.setMaximumSize({160, 160});
        double soughtTime = -1, inOrderTime = -1, draftTime = -1;
        auto sought = alone.copyImageAtTime(time, &soughtTime);
        auto picture = inOrder.copyImageAtTime(time, &inOrderTime);
        auto rough = draft.copyImageAtTime(time, &draftTime);
        ASSERT_TRUE(sought && picture && rough) << time;
        const uint32_t shown = flk::test::frameShownAt(frameTimes, time);
        EXPECT_EQ(numberInImage(*sought), shown) << time;
        EXPECT_EQ(numberInImage(*picture), shown) << time;
        EXPECT_DOUBLE_EQ(inOrderTime, soughtTime) << time;
        const auto roughNumber = numberInImage(*rough);
        ASSERT_TRUE(roughNumber.has_value()) << time;
        EXPECT_LE(*roughNumber, shown) << time;
        EXPECT_GE(*roughNumber + 2, shown) << time;
    }
}

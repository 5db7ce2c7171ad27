#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "FLKBufferTestSupport.h"
#include "core/gpu/FLKBiplanarConverterFilter.h"
#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUTexture.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/timeline/FLKVideoBufferSampleReader.h"
#include "core/timeline/FLKVideoClipStaticFramesGrabber.h"

using flktest::frameNumber;

namespace {

struct ReaderFixture : ::testing::Test {
    std::shared_ptr<FLKAsset> asset = FLKAsset::assetWithPath(flktest::twelveSecondVideo());
    // The whole file placed at timeline time 0.
    std::shared_ptr<FLKVideoClip> clip =
        flktest::clipOfFile("A", flktest::twelveSecondVideo(), {0, 12}, {0, 12});

    std::shared_ptr<FLKVideoBufferSampleReader> reader(double start, double end) {
        return std::make_shared<FLKVideoBufferSampleReader>(asset, FLKTimeRange{start, end});
    }
    static void waitForRead(const std::shared_ptr<FLKVideoBufferSampleReader>& reader) {
        ASSERT_TRUE(flktest::eventually([&] { return !reader->isBuffering(); }));
    }
};

TEST_F(ReaderFixture, ReadsItsWholeSegmentIntoNumberedFramesOnce) {
    auto segment = reader(5, 10);
    std::promise<void> finished;
    EXPECT_TRUE(segment->readWithFinishedBlock([&] { finished.set_value(); }));
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kReading);
    EXPECT_TRUE(segment->isBuffering());
    EXPECT_FALSE(segment->readWithFinishedBlock()) << "a second read while one runs must be refused";
    finished.get_future().wait();
    waitForRead(segment);

    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kFinished);
    EXPECT_EQ(segment->numberOfBufferedFrames(), 150u);
    for (uint32_t n = 150; n < 300; n += 7) {
        const double t = (n + 0.5) / 30;
        EXPECT_EQ(frameNumber(segment->sampleTextureForClip(clip, t)), n) << "at " << t;
        EXPECT_TRUE(segment->hasTextureForClip(clip, t));
    }
    // Up to the segment's end the last frame answers; outside the segment nothing does.
    EXPECT_EQ(frameNumber(segment->sampleTextureForClip(clip, 299.9 / 30)), 299u);
    EXPECT_FALSE(segment->hasTextureForClip(clip, 301.5 / 30));
    EXPECT_FALSE(segment->hasTextureForClip(clip, 2.0));

    // Read to the end: further reads are refused until reset.
    bool called = false;
    EXPECT_FALSE(segment->readWithFinishedBlock([&] { called = true; }));
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kFinished);
    EXPECT_TRUE(segment->isBuffering());
    EXPECT_FALSE(segment->readWithFinishedBlock());

    segment->reset();
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kIdle);
    EXPECT_FALSE(segment->isBuffering());
    EXPECT_EQ(segment->numberOfBufferedFrames(), 0u);
    EXPECT_TRUE(segment->readTo(5.2));
    waitForRead(segment);
    EXPECT_FALSE(called);
    EXPECT_EQ(frameNumber(segment->sampleTextureAtMediaTime(150.5 / 30)), 150u)
        << "a read after reset starts again at the segment's start";
}

TEST_F(ReaderFixture, PartialReadsContinueAndResetWhileReadingOnlyCancels) {
    auto segment = reader(0, 5);
    ASSERT_TRUE(segment->readTo(1.0));
    waitForRead(segment);
    // The frame reaching the target is kept: frames 0 to 30.
    EXPECT_EQ(segment->numberOfBufferedFrames(), 31u);
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kIdle) << "more can be read later";

    ASSERT_TRUE(segment->readTo(2.0));
    waitForRead(segment);
    EXPECT_EQ(segment->numberOfBufferedFrames(), 61u);
    EXPECT_EQ(frameNumber(segment->sampleTextureAtMediaTime(45.5 / 30)), 45u);

    segment->reset();
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kCancelled);
    EXPECT_EQ(segment->numberOfBufferedFrames(), 61u) << "a cancelled read keeps what it decoded";
    segment->reset();
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kIdle);
    EXPECT_EQ(segment->numberOfBufferedFrames(), 0u);
}

// The frame number a converted (RGBA) texture shows, read from its green channel.
std::optional<uint32_t> numberShownBy(FLKGPUTexture& texture) {
    FLKImage image = flk::imageWithTexture(texture);
    std::vector<uint8_t> grey(static_cast<size_t>(image.width) * image.height);
    for (size_t i = 0; i < grey.size(); ++i) grey[i] = image.rgba[i * 4 + 1];
    return FLKSyntheticVideo::numberInLuma(grey.data(), image.width, image.width, image.height);
}

TEST_F(ReaderFixture, OnlyTheLatestFramesShownKeepTheirUploadAndOlderOnesUploadAgain) {
    auto context = FLKContext::sharedContext();
    ASSERT_TRUE(context->isValid()) << context->errorDescription();
    FLKContext::Scope scope(*context);
    auto segment = reader(0, 5);
    segment->setFilter(FLKBiplanarConverterFilter::filter());
    ASSERT_TRUE(segment->readTo(1.0));
    waitForRead(segment);

    auto timeOf = [](uint32_t n) { return (n + 0.5) / 30; };
    for (uint32_t n = 0; n < 6; ++n) ASSERT_TRUE(segment->textureForClip(clip, timeOf(n))) << "frame " << n;
    for (uint32_t n = 0; n < 6; ++n) {
        EXPECT_EQ(segment->sampleTextureForClip(clip, timeOf(n))->texture() != nullptr, n >= 4) << "frame " << n;
    }
    EXPECT_EQ(segment->numberOfBufferedFrames(), 31u) << "dropping an upload keeps the frame";

    auto again = segment->textureForClip(clip, timeOf(1));
    ASSERT_TRUE(again);
    EXPECT_EQ(numberShownBy(*again), 1u) << "a frame shown again is uploaded again";
    EXPECT_FALSE(segment->sampleTextureForClip(clip, timeOf(4))->texture());
    EXPECT_TRUE(segment->sampleTextureForClip(clip, timeOf(5))->texture());
}

// A track shows what its drawing context can draw: the converted frame, or
// the frame's own planes with its colorimetry where the draw converts them.
// Transitions still get converted frames to mix.
TEST_F(ReaderFixture, ContextsDrawingVideoPlanesGetTheFramesPlanes) {
    auto context = FLKContext::sharedContext();
    ASSERT_TRUE(context->isValid()) << context->errorDescription();
    FLKContext::Scope scope(*context);
    struct ModeRestore {
        FLKContext& context;
        ~ModeRestore() { context.setVideoRenderingMode(1); }
    } restore{*context};
    auto segment = reader(0, 5);
    auto converter = FLKBiplanarConverterFilter::filter();
    segment->setFilter(converter);
    ASSERT_TRUE(segment->readTo(1.0));
    waitForRead(segment);
    const double t = 10.5 / 30;

    auto converted = segment->displayTextureForClip(clip, t);
    ASSERT_TRUE(converted);
    EXPECT_FALSE(converted->chromaPlane());
    EXPECT_EQ(numberShownBy(*converted), 10u);

    context->setVideoRenderingMode(2);
    auto planes = segment->displayTextureForClip(clip, t);
    ASSERT_TRUE(planes);
    ASSERT_TRUE(planes->chromaPlane());
    EXPECT_EQ(planes, segment->sampleTextureForClip(clip, t)->texture());
    const auto expected = FLKYCbCrColorimetry::of(converter->colorMatrix(), converter->colorRange());
    EXPECT_EQ(planes->colorimetry().kr, expected.kr);
    EXPECT_EQ(planes->colorimetry().fullRange, expected.fullRange);

    auto forMixing = segment->textureForClip(clip, t);
    ASSERT_TRUE(forMixing);
    EXPECT_FALSE(forMixing->chromaPlane());
    EXPECT_EQ(numberShownBy(*forMixing), 10u);
}

// As in an export: the readiness check looks 1.25 s past the play head, then
// the frame at the play head is shown.
TEST_F(ReaderFixture, WithADecodeAheadTimeHoldsOnlyTheFramesAboutToBeShown) {
    constexpr double kPeekAhead = 1.25;
    // From the frames kept behind the latest shown one to half a second past the peek.
    constexpr size_t kMostHeld = 4 + 38 + 15;
    auto segment = reader(0, 5);
    segment->setDecodeAheadTime(0.5);
    ASSERT_TRUE(segment->readWithFinishedBlock());
    ASSERT_TRUE(flktest::eventually([&] { return segment->isWaitingForLookups(); }))
        << "decoding never waited for the first lookup";
    EXPECT_GE(segment->numberOfBufferedFrames(), 15u);
    EXPECT_LE(segment->numberOfBufferedFrames(), 16u) << "decoding waits for the first lookup";
    EXPECT_TRUE(segment->isBuffering());

    size_t mostHeld = 0;
    for (uint32_t n = 0; n < 150; ++n) {
        const double t = (n + 0.5) / 30;
        const double peek = std::min(t + kPeekAhead, 4.99);
        ASSERT_TRUE(flktest::eventually([&] { return segment->hasTextureForClip(clip, peek); })) << "at " << peek;
        EXPECT_EQ(frameNumber(segment->sampleTextureForClip(clip, t, true)), n) << "a peek ahead releases nothing";
        mostHeld = std::max(mostHeld, segment->numberOfBufferedFrames());
    }
    EXPECT_LE(mostHeld, kMostHeld);
    waitForRead(segment);
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kFinished);
    EXPECT_LE(segment->numberOfBufferedFrames(), 4u + 1u) << "shown frames go";
}

TEST_F(ReaderFixture, AReaderWaitingForThePlayHeadCanBeCancelledOrDropped) {
    auto segment = reader(0, 5);
    segment->setDecodeAheadTime(0.5);
    ASSERT_TRUE(segment->readWithFinishedBlock());
    ASSERT_TRUE(flktest::eventually([&] { return segment->numberOfBufferedFrames() >= 15; }));
    segment->cancelReading();
    waitForRead(segment);
    EXPECT_EQ(segment->status(), FLKVideoSampleReader::kCancelled);

    segment->reset();
    ASSERT_TRUE(segment->readWithFinishedBlock()) << "a cancelled segment reads again after a reset";
    ASSERT_TRUE(flktest::eventually([&] { return segment->hasTextureForClip(clip, 0.5 / 30); }));
    std::weak_ptr<FLKVideoBufferSampleReader> dropped = segment;
    segment.reset();
    EXPECT_TRUE(flktest::eventually([&] { return dropped.expired(); }))
        << "a job waiting for room must not keep its reader";
}

TEST_F(ReaderFixture, SegmentsWithoutFramesFinishEmpty) {
    auto pastTheEnd = reader(12, 15);
    auto missingFile = std::make_shared<FLKVideoBufferSampleReader>(
        FLKAsset::assetWithPath(flk::test::mediaPath("missing.mp4").string()), FLKTimeRange{0, 5});
    for (const auto& segment : {pastTheEnd, missingFile}) {
        segment->readWithFinishedBlock();
        waitForRead(segment);
        EXPECT_EQ(segment->status(), FLKVideoSampleReader::kFinished);
        EXPECT_EQ(segment->numberOfBufferedFrames(), 0u);
        EXPECT_EQ(segment->textureForClip(clip, 13), nullptr);
    }
}

// Recordings at a low or irregular frame rate: a lookup answers the latest
// frame before its time however far back it lies, at any rate.
struct IrregularRecording {
    std::string name;
    std::vector<double> times;  // of its frames
    std::shared_ptr<FLKAsset> asset;
    std::shared_ptr<FLKVideoClip> clip;  // the whole file from timeline time 0
    double duration() const { return asset->duration(); }
};

std::vector<IrregularRecording> irregularRecordings() {
    std::vector<std::pair<std::string, FLKSyntheticVideo::Options>> made;
    for (int fps : {12, 15}) {
        FLKSyntheticVideo::Options options;
        options.fps = fps;
        options.frameCount = 2 * fps;
        made.emplace_back("numbered-" + std::to_string(fps) + "fps.mp4", options);
    }
    made.emplace_back("still-screens.mp4", flk::test::recordingWithStillScreens());
    // Stopped two seconds after its last frame: that frame shows to the end.
    FLKSyntheticVideo::Options stillEnd;
    for (int n = 0; n <= 30; ++n) stillEnd.frameTimes.push_back(n / 30.0);
    stillEnd.endTime = 3.0;
    made.emplace_back("still-end.mp4", stillEnd);
    std::vector<IrregularRecording> recordings;
    for (const auto& [name, options] : made) {
        auto asset = FLKAsset::assetWithPath(flk::test::syntheticVideo(name, options));
        const double duration = asset->duration();
        auto clip = flktest::clipOfFile("A", asset->path(), {0, duration}, {0, duration});
        recordings.push_back({name, FLKSyntheticVideo::frameTimesOf(options), asset, clip});
    }
    return recordings;
}

TEST(FLKVideoBufferSampleReaderRates, EveryTimeShowsTheLatestFrameBeforeIt) {
    for (const auto& recording : irregularRecordings()) {
        SCOPED_TRACE(recording.name);
        const double duration = recording.duration();
        // The whole file, and a segment starting in the middle of a still screen.
        for (double start : {0.0, 2.5}) {
            if (start >= duration) continue;
            auto segment = std::make_shared<FLKVideoBufferSampleReader>(recording.asset, FLKTimeRange{start, duration});
            ASSERT_TRUE(segment->readWithFinishedBlock());
            ASSERT_TRUE(flktest::eventually([&] { return !segment->isBuffering(); }));
            // On every frame boundary of a 30 fps timeline and halfway between.
            for (double t = start; t <= duration; t += 0.5 / 30) {
                EXPECT_EQ(frameNumber(segment->sampleTextureForClip(recording.clip, t)),
                          flk::test::frameShownAt(recording.times, t))
                    << "at " << t << " in the segment from " << start;
            }
        }
    }
}

// As an export plays: the readiness check peeks 1.25 s ahead, then the frame
// at the play head is shown, with decoding held half a second ahead of the
// lookups. A frame that never comes (a low rate, a still screen) must not be
// waited for.
TEST(FLKVideoBufferSampleReaderRates, PlayingThroughWithADecodeAheadTimeShowsEveryFrame) {
    for (const auto& recording : irregularRecordings()) {
        SCOPED_TRACE(recording.name);
        const double duration = recording.duration();
        const auto& clip = recording.clip;
        auto segment = std::make_shared<FLKVideoBufferSampleReader>(recording.asset, FLKTimeRange{0, duration});
        segment->setDecodeAheadTime(0.5);
        ASSERT_TRUE(segment->readWithFinishedBlock());
        for (int k = 1; k / 30.0 <= duration; ++k) {
            const double t = k / 30.0, peek = std::min(t + 1.25, duration);
            ASSERT_TRUE(flktest::eventually([&] { return segment->hasTextureForClip(clip, peek); })) << "at " << peek;
            EXPECT_EQ(frameNumber(segment->sampleTextureForClip(clip, t, true)),
                      flk::test::frameShownAt(recording.times, t))
                << "at " << t;
        }
        ASSERT_TRUE(flktest::eventually([&] { return !segment->isBuffering(); }));
    }
}

TEST(FLKVideoClipStaticFramesGrabber, SizesThumbnailsToTheCell) {
    const FLKSize thumbnail = FLKVideoClipStaticFramesGrabber::maxSizeForImageSize({1920, 1080}, {400, 44});
    EXPECT_EQ(thumbnail.width, 79);
    EXPECT_EQ(thumbnail.height, 44);
    EXPECT_EQ(FLKVideoClipStaticFramesGrabber::numberOfFramesForImageSize({1920, 1080}, {400, 44}), 7u);
    EXPECT_EQ(FLKVideoClipStaticFramesGrabber::numberOfFramesForImageSize({320, 240}, {200, 30}), 6u);
}

TEST(FLKVideoClipStaticFramesGrabber, GeneratesOnceAndReusesItsCache) {
    auto mainQueue = std::make_shared<FLKManualMainQueue>();
    FLKMainQueue::setMain(mainQueue);
    auto clip = flktest::clipOfFile("A", flktest::twelveSecondVideo(), {0, 12}, {0, 12});
    auto grabber = std::make_shared<FLKVideoClipStaticFramesGrabber>(clip);
    std::vector<double> handed;
    auto handler = [&](const std::shared_ptr<FLKVideoClipStaticFrame>& frame) {
        handed.push_back(frame->time());
        ASSERT_TRUE(frame->image());
        EXPECT_EQ(frame->image()->width, 40);
        EXPECT_EQ(frame->image()->height, 30);
    };

    // A 200 x 30 cell takes 40-point thumbnails: 6 of them, a second apart.
    grabber->grabFramesFromTime(0, 6, {200, 30}, handler);
    ASSERT_TRUE(flktest::eventually([&] { return grabber->grabbedFramesFromTime(0, 100).size() == 6; }));
    EXPECT_TRUE(handed.empty()) << "new thumbnails reach the handler on the main queue";
    mainQueue->runPending();
    ASSERT_EQ(handed.size(), 6u);
    for (size_t i = 0; i < handed.size(); ++i) EXPECT_NEAR(handed[i], static_cast<double>(i), 1.0 / 30);

    handed.clear();
    grabber->grabFramesFromTime(2, 6, {200, 30}, handler);
    ASSERT_EQ(handed.size(), 4u) << "cached thumbnails are handed over at once";
    EXPECT_NEAR(handed.front(), 2, 1.0 / 30);

    handed.clear();
    grabber->grabFramesFromTime(5.5, 11.5, {200, 30}, handler);
    EXPECT_TRUE(handed.empty());
    ASSERT_TRUE(flktest::eventually([&] { return grabber->grabbedFramesFromTime(0, 100).size() == 6; }));
    EXPECT_NEAR(grabber->firstFrame()->time(), 5.5, 1.0 / 30) << "a start after the cache regenerates it";
    mainQueue->runPending();
}

TEST(FLKVideoClipStaticFramesGrabber, ClipWithoutVideoNeverCallsTheHandler) {
    auto clip = flktest::clipOfFile("A", flk::test::mediaPath("none.mp4").string(), {0, 1}, {0, 1});
    auto grabber = std::make_shared<FLKVideoClipStaticFramesGrabber>(clip);
    bool called = false;
    grabber->grabFramesFromTime(0, 1, {200, 30}, [&](const auto&) { called = true; });
    EXPECT_FALSE(called);
    EXPECT_EQ(grabber->firstFrame(), nullptr);
}

}  // namespace

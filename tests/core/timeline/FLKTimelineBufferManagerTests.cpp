#include <gtest/gtest.h>

#include <cmath>

#include "FLKBufferTestSupport.h"
#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKTransition.h"
#include "core/timeline/FLKTimelineTransitionBufferManager.h"
#include "core/timeline/FLKTimelineVideoBufferManager.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoTransitionBufferSampleReader.h"

using flktest::frameAt;
using flktest::frameNumber;
using Readers = FLKTimelineVideoBufferManager::Readers;

namespace {

// A track holding `count` clips of every asset.
class ClipCount : public FLKTimelineVideoTrackClipSource {
public:
    std::shared_ptr<FLKTimelineClip> clipWithIdentifier(const std::string&) const override { return nullptr; }
    uint64_t numberOfClipsForAsset(const std::filesystem::path&) const override { return count; }
    uint64_t count = 1;
};

std::vector<FLKTimeRange> rangesOf(const Readers& readers) {
    std::vector<FLKTimeRange> ranges;
    for (const auto& reader : readers) ranges.push_back(reader->readRange());
    return ranges;
}

void waitForReads(const Readers& readers) {
    for (const auto& reader : readers) {
        ASSERT_TRUE(flktest::eventually([&] { return !reader->isBuffering(); }));
    }
}

struct ManagerFixture : ::testing::Test {
    ClipCount clipSource;
    FLKTimelineVideoBufferManager manager{clipSource};
    std::shared_ptr<FLKVideoClip> clip = flktest::clipOfFile("A", flktest::twelveSecondVideo(), {0, 12}, {0, 12});
};

TEST_F(ManagerFixture, CutsEachAssetIntoSegmentsOfTheBufferWidth) {
    manager.createBuffersForClip(clip);
    EXPECT_EQ(rangesOf(manager.buffersForClip(clip)),
              (std::vector<FLKTimeRange>{{0, 5}, {5, 10}, {10, 12}}));

    auto tenSeconds = flktest::clipOfFile("B", flktest::numberedVideo(300), {0, 10}, {0, 10});
    manager.createBuffersForClip(tenSeconds);
    EXPECT_EQ(rangesOf(manager.buffersForClip(tenSeconds)), (std::vector<FLKTimeRange>{{0, 5}, {5, 10}}));

    auto tenAndABit = flktest::clipOfFile("C", flktest::numberedVideo(303), {0, 10.1}, {0, 10.1});
    manager.createBuffersForClip(tenAndABit);
    auto ranges = rangesOf(manager.buffersForClip(tenAndABit));
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_EQ(ranges[2].start, 10);
    EXPECT_NEAR(ranges[2].end, 10.1, 1e-9);
}

TEST_F(ManagerFixture, AnswersTheEarlierSegmentAtASeam) {
    // The file from 0 s laid at timeline time 2 s: media 5.0 is timeline 7.0.
    auto placed = flktest::clipOfFile("A", flktest::twelveSecondVideo(), {2, 14}, {0, 12});
    manager.createBuffersForClip(placed);
    const Readers readers = manager.buffersForClip(placed);
    EXPECT_EQ(manager.bufferForClip(placed, 7.0), readers[0]);
    EXPECT_EQ(manager.bufferForClip(placed, 7.001), readers[1]);
    EXPECT_EQ(manager.bufferForClip(placed, 1.0), nullptr);
}

TEST_F(ManagerFixture, RemovingAllBuffersCancelsAndForgetsEverySegment) {
    manager.createBuffersForClip(clip);
    const Readers readers = manager.buffersForClip(clip);
    manager.startBufferingForClip(clip, 0);
    manager.startBufferingForClip(clip, 2.5);
    manager.removeAllBuffers();

    EXPECT_TRUE(manager.buffersForClip(clip).empty());
    EXPECT_FALSE(manager.hasBuffersForAsset(clip->assetURL()));
    EXPECT_EQ(manager.currentBuffer(), nullptr);
    EXPECT_TRUE(manager.backBuffers().empty());
    for (const auto& reader : {readers[0], readers[1]}) {
        EXPECT_EQ(reader->status(), FLKVideoSampleReader::kCancelled);
    }
    waitForReads(readers);
    manager.startBufferingForClip(clip, 0);
    EXPECT_EQ(manager.bufferForClip(clip, 0), nullptr) << "nothing reads again until clips come";

    manager.createBuffersForClip(clip);
    EXPECT_EQ(rangesOf(manager.buffersForClip(clip)).size(), 3u);
}

TEST_F(ManagerFixture, StartsASegmentAMarginAheadAndKeepsOneBackSegment) {
    manager.createBuffersForClip(clip);
    const Readers readers = manager.buffersForClip(clip);
    EXPECT_EQ(manager.readableBufferForClip(clip, 2.4), readers[0]);
    EXPECT_EQ(manager.readableBufferForClip(clip, 2.5), readers[0]) << "the first idle segment in order";

    manager.startBufferingForClip(clip, 0);
    EXPECT_EQ(manager.currentBuffer(), readers[0]);
    EXPECT_EQ(manager.readableBufferForClip(clip, 2.4), nullptr);
    EXPECT_EQ(manager.readableBufferForClip(clip, 2.5), readers[1]);
    manager.startBufferingForClip(clip, 2.5);
    EXPECT_EQ(manager.currentBuffer(), readers[1]);
    EXPECT_EQ(manager.backBuffers(), (Readers{readers[0]}));
    waitForReads(readers);

    // Playing on through the second segment: nothing new until 7.5.
    for (double t : {5.5, 6.0, 7.0}) manager.startBufferingForClip(clip, t);
    EXPECT_EQ(manager.currentBuffer(), readers[1]);
    manager.startBufferingForClip(clip, 7.5);
    EXPECT_EQ(manager.currentBuffer(), readers[2]);
    EXPECT_EQ(manager.backBuffers(), (Readers{readers[1]}));
    EXPECT_EQ(readers[0]->status(), FLKVideoSampleReader::kIdle) << "the oldest segment is reset";
    EXPECT_EQ(readers[0]->numberOfBufferedFrames(), 0u);
    EXPECT_EQ(readers[1]->numberOfBufferedFrames(), 150u);
    waitForReads(readers);

    // Seeking back reads the first segment again from its start; the segment
    // just played stays, the one read ahead goes.
    manager.startBufferingForClip(clip, 1.0);
    EXPECT_EQ(manager.currentBuffer(), readers[0]);
    EXPECT_EQ(manager.backBuffers(), (Readers{readers[1]}));
    EXPECT_EQ(readers[2]->status(), FLKVideoSampleReader::kIdle);
    waitForReads(readers);
    EXPECT_EQ(frameNumber(readers[0]->sampleTextureAtMediaTime(0.5 / 30)), 0u);
    EXPECT_EQ(readers[0]->numberOfBufferedFrames(), 150u);
}

// Before a transition one update reads the next clip's segments too; the
// segment read ahead for the current clip must survive them, or every update
// reads it again and the play head never reaches it.
TEST_F(ManagerFixture, ASegmentReadAheadSurvivesTheNextClipsReads) {
    auto next = flktest::clipOfFile("B", flktest::numberedVideo(300), {3, 13}, {0, 10});
    manager.createBuffersForClip(clip);
    manager.createBuffersForClip(next);
    const Readers readers = manager.buffersForClip(clip);
    manager.startBufferingForClip(clip, 0);
    manager.startBufferingForClip(clip, 2.6);
    ASSERT_EQ(manager.currentBuffer(), readers[1]);
    manager.startBufferingForClip(next, 5.6);
    EXPECT_EQ(manager.currentBuffer(), manager.buffersForClip(next)[0]);
    waitForReads(readers);
    EXPECT_EQ(readers[1]->status(), FLKVideoSampleReader::kFinished) << "the read-ahead segment was dropped";
    EXPECT_EQ(readers[1]->numberOfBufferedFrames(), 150u);
    waitForReads(manager.buffersForClip(next));
}

struct TrackFixture : ::testing::Test {
    void SetUp() override {
        FLKTimelineVideoBufferManager::installAsTrackBufferManagers();
        track = std::make_shared<FLKTimelineVideoTrack>("track");
        videoManager = std::dynamic_pointer_cast<FLKTimelineVideoBufferManager>(track->bufferManagers().video);
        ASSERT_TRUE(videoManager);
    }
    void TearDown() override {
        for (const auto& clip : track->videoClips()) waitForReads(videoManager->buffersForClip(clip));
        FLKTimelineVideoTrack::setBufferManagersFactory({});
    }

    // Two clips of different files joined by a one-second transition:
    // A shows file time 0-6 at timeline 0-6, B file time 2-8 at 5-11.
    std::shared_ptr<FLKVideoTransitionClip> twoClipsWithTransition(std::shared_ptr<FLKSerializable> transition) {
        auto a = flktest::clipOfFile("A", flktest::twelveSecondVideo(), {0, 6}, {0, 6});
        auto b = flktest::clipOfFile("B", flktest::numberedVideo(300), {6, 12}, {2, 8});
        track->addClip(a);
        track->addClip(b);
        return track->addTransition(std::move(transition), a, b, 1.0);
    }

    std::shared_ptr<FLKVideoBufferSampleReader> readerAt(const std::shared_ptr<FLKTimelineClip>& clip, double t) {
        return std::dynamic_pointer_cast<FLKVideoBufferSampleReader>(videoManager->bufferForClip(clip, t));
    }

    std::shared_ptr<FLKTimelineVideoTrack> track;
    std::shared_ptr<FLKTimelineVideoBufferManager> videoManager;
};

TEST_F(TrackFixture, ClipsOfOneAssetShareReadersUntilTheLastGoes) {
    const std::string path = flktest::twelveSecondVideo();
    auto first = flktest::clipOfFile("A", path, {0, 4}, {0, 4});
    auto second = flktest::clipOfFile("B", path, {4, 8}, {6, 10});
    track->addClip(first);
    track->addClip(second);
    const Readers readers = videoManager->buffersForClip(first);
    ASSERT_EQ(readers.size(), 3u);
    EXPECT_EQ(videoManager->buffersForClip(second), readers);
    // Timeline 4.5 is media 6.5 of the same file: the second segment.
    EXPECT_EQ(videoManager->bufferForClip(second, 4.5), readers[1]);

    track->removeClip(first);
    EXPECT_TRUE(videoManager->hasBuffersForAsset(path));
    EXPECT_NE(readers[0]->status(), FLKVideoSampleReader::kCancelled);
    track->removeClip(second);
    EXPECT_FALSE(videoManager->hasBuffersForAsset(path));
    for (const auto& reader : readers) EXPECT_EQ(reader->status(), FLKVideoSampleReader::kCancelled);
}

TEST_F(TrackFixture, TransitionProgressAndReadiness) {
    auto transition = twoClipsWithTransition(nullptr);
    ASSERT_TRUE(transition);
    EXPECT_EQ(transition->timeRange(), (FLKTimeRange{5, 6}));
    auto reader = std::dynamic_pointer_cast<FLKVideoTransitionBufferSampleReader>(
        track->bufferManagers().transition->bufferForClip(transition, 5.5));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->progressAtTime(5.0), 0.0f);
    EXPECT_EQ(reader->progressAtTime(5.5), 0.5f);
    EXPECT_EQ(reader->progressAtTime(6.0), 1.0f);
    EXPECT_EQ(reader->textureForClip(transition, 5.0 - 1.0 / 30), nullptr);
    EXPECT_EQ(reader->textureForClip(transition, 6.0 + 1.0 / 30), nullptr);

    // Only A's segment around 5.5 is read: B's frames are missing.
    auto a = track->clipWithIdentifier("A");
    auto b = track->clipWithIdentifier("B");
    readerAt(a, 5.5)->readWithFinishedBlock();
    waitForReads(videoManager->buffersForClip(a));
    EXPECT_TRUE(readerAt(a, 5.5)->hasTextureForClip(a, 5.5));
    EXPECT_FALSE(reader->hasTextureForClip(transition, 5.5));

    // Buffering at the transition buffers both clips it joins.
    track->setCurrentTime(5.5);
    waitForReads(videoManager->buffersForClip(b));
    EXPECT_TRUE(reader->hasTextureForClip(transition, 5.5));
    EXPECT_TRUE(track->hasTextureAtTime(5.5));
}

// Frame by frame, as an export would: each frame waits until the track is
// ready, then must show the frame of its own time, clip by clip.
TEST_F(TrackFixture, PlayingThroughTwoClipsAndATransitionShowsEveryFrameInOrder) {
    auto transition = twoClipsWithTransition(nullptr);
    ASSERT_TRUE(transition);
    auto a = std::dynamic_pointer_cast<FLKVideoClip>(track->clipWithIdentifier("A"));
    auto b = std::dynamic_pointer_cast<FLKVideoClip>(track->clipWithIdentifier("B"));
    const int frames = static_cast<int>(std::lround(track->duration() * 30));
    ASSERT_EQ(frames, 330);
    for (int f = 0; f < frames; ++f) {
        const double t = (f + 0.5) / 30;
        track->setCurrentTime(t);
        ASSERT_TRUE(flktest::eventually([&] { return track->hasTextureAtTime(t); })) << "frame " << f;
        auto clip = track->clipAtTime(t);
        for (const auto& shown : {a, b}) {
            if (!shown->timeRange().containsTime(t)) continue;
            auto reader = readerAt(shown, t);
            ASSERT_TRUE(reader);
            ASSERT_TRUE(flktest::eventually([&] { return reader->hasTextureForClip(shown, t); })) << "frame " << f;
            EXPECT_EQ(frameNumber(reader->sampleTextureForClip(shown, t)),
                      frameAt(shown->clipTimeForTimelineTime(t)))
                << "frame " << f << " of " << shown->identifier();
        }
    }
}

// The play head jumps about a 17-second recording (segments 0-5, 5-10,
// 10-15 and 15-17), backwards and forwards, moved once per jump as the
// editor's scrubber or `frame` does: each jump reads its own segment,
// wherever the segments read before lie, and shows the frame of its time.
TEST_F(TrackFixture, AJumpingPlayHeadShowsTheFrameOfEverySegment) {
    FLKSyntheticVideo::Options options;
    options.fps = 10;
    options.frameCount = 170;
    auto clip = flktest::clipOfFile("A", flk::test::syntheticVideo("numbered-17s.mp4", options), {0, 17}, {0, 17});
    track->addClip(clip);
    ASSERT_EQ(videoManager->buffersForClip(clip).size(), 4u);
    for (double t : {0.25, 11.35, 16.45, 3.15, 7.75, 12.95, 1.05, 15.55, 6.25, 14.85, 0.55}) {
        track->setCurrentTime(t);
        ASSERT_TRUE(flktest::eventually([&] { return track->hasTextureAtTime(t); })) << "at " << t;
        EXPECT_EQ(frameNumber(readerAt(clip, t)->sampleTextureForClip(clip, t)), static_cast<uint32_t>(t * 10))
            << "at " << t;
        // Reads started for the jump end before the next one, as a user's pauses would let them.
        waitForReads(videoManager->buffersForClip(clip));
    }
}

// Through the GPU: the converter filter's output shows the frame's number.
TEST_F(TrackFixture, TrackTexturesShowTheFrameOfTheirTime) {
    auto context = FLKContext::sharedContext();
    ASSERT_TRUE(context->isValid()) << context->errorDescription();
    FLKContext::Scope scope(*context);
    auto transition = twoClipsWithTransition(FLKTransition::transitionWithFunctionName(
        FLKTransition::transitionFunctionNames().front()));
    ASSERT_TRUE(transition && transition->transition());

    // Inside the transition (5-6 s) the picture mixes two frames: only its presence counts.
    for (double t : {1.5 / 30, 100.5 / 30, 160.5 / 30, 200.5 / 30}) {
        track->setCurrentTime(t);
        ASSERT_TRUE(flktest::eventually([&] { return track->hasTextureAtTime(t); }));
        auto texture = track->textureAtTime(t);
        ASSERT_TRUE(texture) << "at " << t;
        if (t > 5 && t < 6) continue;
        FLKImage image = flk::imageWithTexture(*texture);
        ASSERT_EQ(image.width, 720);
        std::vector<uint8_t> grey(static_cast<size_t>(image.width) * image.height);
        for (size_t i = 0; i < grey.size(); ++i) grey[i] = image.rgba[i * 4 + 1];
        auto number = FLKSyntheticVideo::numberInLuma(grey.data(), image.width, image.width, image.height);
        auto clip = std::dynamic_pointer_cast<FLKVideoClip>(track->clipAtTime(t));
        ASSERT_TRUE(clip);
        EXPECT_EQ(number, frameAt(clip->clipTimeForTimelineTime(t))) << "at " << t;
    }
}

}  // namespace

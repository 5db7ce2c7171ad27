#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>

#include "FLKBufferTestSupport.h"
#include "core/platform/FLKFrameByFrameClock.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/timeline/FLKPlaceholderClip.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoBufferManager.h"

using flktest::frameNumber;
using Readers = FLKTimelineVideoBufferManager::Readers;

namespace {

// A timeline of real segment readers stepped frame by frame at 30 fps, as an
// export steps it; the readiness checker's timer runs on a manual main queue
// that the test turns.
class FrameByFramePlayback : public ::testing::Test {
protected:
    void SetUp() override {
        FLKMainQueue::setMain(mainQueue);
        FLKTimelineVideoBufferManager::installAsTrackBufferManagers();
        flk::setLogSink([this](const std::string& line) {
            if (line == "Waiting") ++waits;
        });
        timeline = FLKTimeline::timelineWithTimer(clock);
        track = timeline->createVideoTrack();
        videoManager = std::dynamic_pointer_cast<FLKTimelineVideoBufferManager>(track->bufferManagers().video);
        ASSERT_TRUE(videoManager);
    }
    void TearDown() override {
        timeline->pause();
        for (const auto& clip : track->videoClips()) waitForReads(videoManager->buffersForClip(clip));
        mainQueue->advanceBy(1.0);
        flk::setLogSink({});
        FLKTimelineVideoTrack::setBufferManagersFactory({});
        FLKMainQueue::setMain(nullptr);
    }

    static bool waitForReads(const Readers& readers) {
        return std::all_of(readers.begin(), readers.end(), [](const auto& reader) {
            return flktest::eventually([&] { return !reader->isBuffering(); });
        });
    }
    bool readsFinished() const {
        bool finished = true;
        for (const auto& clip : track->videoClips()) finished = waitForReads(videoManager->buffersForClip(clip)) && finished;
        return finished;
    }

    // "file 0-5: 3, ..." for every segment reader, its status after the colon.
    std::string readerStates() const {
        std::string states;
        for (const auto& clip : track->videoClips()) {
            states += clip->identifier() + ":";
            for (const auto& reader : videoManager->buffersForClip(clip)) {
                states += " " + std::to_string(static_cast<int>(reader->readRange().start)) + "-" +
                          std::to_string(static_cast<int>(reader->readRange().end)) + "=" +
                          std::to_string(reader->status());
            }
            states += "; ";
        }
        return states;
    }

    // The number on the decoded frame that the track hands on for `clip` at t.
    std::optional<uint32_t> shownFrame(const std::shared_ptr<FLKVideoClip>& clip, double t) const {
        auto reader = std::dynamic_pointer_cast<FLKVideoBufferSampleReader>(videoManager->bufferForClip(clip, t));
        return reader ? frameNumber(reader->sampleTextureForClip(clip, t)) : std::nullopt;
    }

    static constexpr int kMaxPollsPerRefusal = 4;

    // Ticks until the clock is finished. A refused frame must be taken once
    // the segment reads under way have ended and the checker has polled.
    void playToTheEnd(const std::function<void(unsigned frame, double t)>& onFrame) {
        timeline->play();
        while (!clock->isFinished()) {
            const unsigned frame = clock->currentFrame();
            if (clock->tick()) {
                onFrame(frame, timeline->currentTime());
                continue;
            }
            // A poll may itself start the read of the segment the margin
            // reaches: wait for that one too, a few polls at most.
            for (int poll = 0; poll < kMaxPollsPerRefusal && !timeline->isPlaying(); ++poll) {
                ASSERT_TRUE(readsFinished()) << "a segment read never ended, frame " << frame;
                mainQueue->runPending();
                mainQueue->advanceBy(FLKTimelineTrackReadinessChecker::kPollingInterval);
            }
            ASSERT_TRUE(timeline->isPlaying())
                << "still waiting after every read ended, frame " << frame << "; segments " << readerStates();
        }
    }

    std::shared_ptr<FLKManualMainQueue> mainQueue = std::make_shared<FLKManualMainQueue>();
    std::shared_ptr<FLKFrameByFrameClock> clock;
    std::shared_ptr<FLKTimeline> timeline;
    std::shared_ptr<FLKTimelineVideoTrack> track;
    std::shared_ptr<FLKTimelineVideoBufferManager> videoManager;
    int waits = 0;  // main thread only
};

// A: file time 0-6 at timeline 0-6; B: file time 2-8 at 6-12, moved to 5-11
// by a one-second transition. 330 frames.
class TwoClipsAndATransition : public FrameByFramePlayback {
protected:
    void SetUp() override {
        clock = std::make_shared<FLKFrameByFrameClock>(30, 330);
        FrameByFramePlayback::SetUp();
        auto a = flktest::clipOfFile("A", flktest::twelveSecondVideo(), {0, 6}, {0, 6});
        auto b = flktest::clipOfFile("B", flktest::numberedVideo(300), {6, 12}, {2, 8});
        track->addClip(a);
        track->addClip(b);
        ASSERT_TRUE(track->addTransition(nullptr, a, b, 1.0));
        this->a = std::dynamic_pointer_cast<FLKVideoClip>(track->clipWithIdentifier("A"));
        this->b = std::dynamic_pointer_cast<FLKVideoClip>(track->clipWithIdentifier("B"));
        ASSERT_DOUBLE_EQ(timeline->duration(), 11.0);
    }
    std::shared_ptr<FLKVideoClip> a, b;
};

TEST_F(TwoClipsAndATransition, EveryFrameIsDeliveredInOrderShowingItsSourceFrame) {
    std::vector<unsigned> delivered;
    std::optional<uint32_t> previousShown;
    std::shared_ptr<FLKTimelineClip> previousClip;
    playToTheEnd([&](unsigned frame, double t) {
        delivered.push_back(frame);
        ASSERT_DOUBLE_EQ(t, frame / 30.0);
        ASSERT_TRUE(track->hasTextureAtTime(t)) << "frame " << frame;
        auto clip = track->clipAtTime(t);
        ASSERT_TRUE(clip);
        if (clip->type() == FLKTimelineClip::kTransition) {
            // Both joined clips have their frame; the mix itself is the GPU's.
            EXPECT_TRUE(shownFrame(a, t)) << "frame " << frame;
            EXPECT_TRUE(shownFrame(b, t)) << "frame " << frame;
            previousShown.reset();
            return;
        }
        auto video = std::static_pointer_cast<FLKVideoClip>(clip);
        auto shown = shownFrame(video, t);
        ASSERT_TRUE(shown) << "frame " << frame;
        // At exactly n / fps the decoded frame n - 1 lies one period away and
        // may still answer, first in ring order.
        const auto source = static_cast<uint32_t>(std::lround(video->clipTimeForTimelineTime(t) * 30));
        EXPECT_TRUE(*shown == source || *shown + 1 == source)
            << "frame " << frame << " shows " << *shown << ", source frame " << source;
        if (previousShown && flk::sameClip(previousClip, clip)) {
            EXPECT_GE(*shown, *previousShown) << "frame " << frame << " went back";
        }
        previousShown = shown;
        previousClip = clip;
    });
    ASSERT_EQ(delivered.size(), 330u);
    for (unsigned i = 0; i < delivered.size(); ++i) ASSERT_EQ(delivered[i], i);
    EXPECT_GT(waits, 0) << "the first frame has to wait for its segment";
    EXPECT_DOUBLE_EQ(timeline->currentTime(), 329 / 30.0);
}

// Seeking backwards re-reads segments that were dropped or cut short; a
// segment whose read was cancelled half way must become readable again
// rather than leave the play head waiting for it.
TEST_F(TwoClipsAndATransition, PlayingAgainAfterSeekingBackReadsDroppedSegmentsAgain) {
    unsigned frames = 0;
    playToTheEnd([&](unsigned, double) { ++frames; });
    ASSERT_EQ(frames, 330u);

    clock = std::make_shared<FLKFrameByFrameClock>(30, 330);
    timeline->setTimer(clock);
    timeline->setCurrentTime(0);
    std::optional<uint32_t> firstShown;
    playToTheEnd([&](unsigned frame, double t) {
        if (frame == 0) firstShown = shownFrame(a, t);
    });
    EXPECT_EQ(clock->currentFrame(), 330u);
    EXPECT_EQ(firstShown, 0u);
}

// Clips with nothing to decode never hold an export up: a placeholder, and a
// file that cannot be opened (no length, so no segments).
class NothingToDecode : public FrameByFramePlayback {
protected:
    void SetUp() override {
        clock = std::make_shared<FLKFrameByFrameClock>(30, 30);
        FrameByFramePlayback::SetUp();
    }
};

TEST_F(NothingToDecode, APlaceholderIsReadyAtOnce) {
    track->addClip(std::make_shared<FLKPlaceholderClip>("P", FLKTimeRange{0, 1}));
    EXPECT_TRUE(track->isReady());
    unsigned frames = 0;
    playToTheEnd([&](unsigned, double) { ++frames; });
    EXPECT_EQ(frames, 30u);
    EXPECT_EQ(waits, 0);
}

TEST_F(NothingToDecode, ATrackWithoutBufferManagersIsReadyAtOnce) {
    FLKTimelineVideoTrack::setBufferManagersFactory({});
    auto bare = std::make_shared<FLKTimelineVideoTrack>("bare");
    bare->addClip(flktest::clipOfFile("A", flktest::numberedVideo(30), {0, 1}, {0, 1}));
    timeline->setTracks({bare});
    EXPECT_TRUE(bare->isReady());
    unsigned frames = 0;
    playToTheEnd([&](unsigned, double) { ++frames; });
    EXPECT_EQ(frames, 30u);
}

TEST_F(NothingToDecode, AnUnreadableFileIsReadyAtOnce) {
    const auto path = flk::test::mediaPath("not-a-video.mp4");
    { std::ofstream(path) << "no video here"; }
    track->addClip(flktest::clipOfFile("A", path.string(), {0, 1}, {0, 1}));
    unsigned frames = 0;
    playToTheEnd([&](unsigned, double) { ++frames; });
    EXPECT_EQ(frames, 30u);
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "core/platform/FLKClock.h"
#include "core/platform/FLKDispatchQueue.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKFrameByFrameClock.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTimelineVideoSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKPlaceholderClip.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineQuery.h"
#include "core/timeline/FLKTimelineTestSupport.h"

using flktest::videoClip;

namespace {
std::filesystem::path scratch(const std::string& name) {
    auto dir = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "timeline";
    std::filesystem::create_directories(dir);
    return dir / name;
}

class FolderFile : public FLKSerializationFile {
public:
    explicit FolderFile(std::filesystem::path folder) : folder_(std::move(folder)) {}
    std::filesystem::path folderURL() const override { return folder_; }

private:
    std::filesystem::path folder_;
};

class TestFade : public FLKSerializable {
public:
    double strength = 0;
    FLKJSON serialized() const override { return {{"className", className()}, {"strength", strength}}; }
    std::string className() const override { return "TestFade"; }
    static std::shared_ptr<TestFade> newWithDictionary(const FLKJSON& d) {
        auto fade = std::make_shared<TestFade>();
        fade->strength = d.value("strength", 0.0);
        return fade;
    }
};
FLK_REGISTER_SERIALIZABLE(TestFade);

// A timeline driven frame by frame, with a manual main queue for the
// readiness checker and test buffer managers for its one video track.
class PlaybackTest : public ::testing::Test {
protected:
    void SetUp() override {
        FLKMainQueue::setMain(mainQueue);
        flk::setLogSink([this](const std::string& line) { log.push_back(line); });
        timeline = FLKTimeline::timelineWithTimer(clock);
        track = timeline->createVideoTrack();
        track->addClip(videoClip("A", 0, 2));
        video = managers.videoManagers.at(0);
    }
    void TearDown() override {
        timeline->pause();
        mainQueue->advanceBy(1.0);  // lets stopped timers drop out of the queue
        flk::setLogSink({});
        FLKMainQueue::setMain(nullptr);
    }

    flktest::ScopedBufferManagers managers;
    std::shared_ptr<FLKManualMainQueue> mainQueue = std::make_shared<FLKManualMainQueue>();
    std::shared_ptr<FLKFrameByFrameClock> clock = std::make_shared<FLKFrameByFrameClock>(10, 100);
    std::shared_ptr<FLKTimeline> timeline;
    std::shared_ptr<FLKTimelineVideoTrack> track;
    std::shared_ptr<flktest::TestBufferManager> video;
    std::vector<std::string> log;
};
}  // namespace

TEST(FLKTimeline, RoundTripThroughJSON) {
    flktest::ScopedMediaLengths lengths({{"a.mp4", 10}, {"b.mp4", 6}});
    auto timeline = FLKTimeline::timelineWithTimer({});
    EXPECT_EQ(timeline->duration(), 0);
    timeline->setName("Edit");
    timeline->setLooping(true);
    auto track = timeline->createVideoTrack();
    auto a = track->createClipWithVideoURL("/old/Doc/media/a.mp4");
    track->addClip(a);
    auto b = track->createClipWithVideoURL("/old/Doc/media/b.mp4");
    track->addClip(b);
    auto fade = std::make_shared<TestFade>();
    fade->strength = 0.5;
    track->addTransition(fade, a, b, 1.0);
    EXPECT_EQ(timeline->duration(), 15);

    const auto file = scratch("timeline.json");
    ASSERT_TRUE(flk::writeToJSONAtURL(*timeline, file));
    std::shared_ptr<FLKTimeline> read;
    {
        FLKFileSerializationContextScope scope(std::make_shared<FolderFile>("/new/Doc"));
        read = flk::serializableFromJSONAtURL<FLKTimeline>(file);
    }
    EXPECT_TRUE(read->isEqual(*timeline));
    EXPECT_EQ(read->name(), "Master");
    EXPECT_FALSE(read->isLooping());
    EXPECT_FALSE(read->isPlaying());
    EXPECT_EQ(read->timer(), FLKClock::clock());
    auto written = flk::dictionaryFromJSONAtURL(file);
    ASSERT_TRUE(written);
    (*written)["tracks"][0]["clips"][1]["name"] = "";  // written, never restored
    EXPECT_EQ(read->serialized(), *written);

    ASSERT_EQ(read->tracks().size(), 1u);
    auto readTrack = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(read->tracks()[0]);
    ASSERT_TRUE(readTrack);
    EXPECT_EQ(readTrack->identifier(), track->identifier());
    ASSERT_EQ(readTrack->clips().size(), 3u);
    auto readB = readTrack->videoClips()[1];
    EXPECT_EQ(readB->assetURL(), std::filesystem::path("/new/Doc/media/b.mp4"));
    EXPECT_EQ(readB->timeRange(), (FLKTimeRange{9, 15}));
    EXPECT_EQ(readB->clipRange(), (FLKTimeRange{0, 6}));
    EXPECT_EQ(readB->name(), "");
    auto readTransition = readTrack->transitionClips()[0];
    EXPECT_EQ(readTransition->name(), "");
    auto readFade = std::dynamic_pointer_cast<TestFade>(readTransition->transition());
    ASSERT_TRUE(readFade);
    EXPECT_EQ(readFade->strength, 0.5);
    EXPECT_EQ(readTrack->clipAtTime(9.5), readTransition);
}

TEST(FLKTimeline, ResourcesAndQueries) {
    auto timeline = FLKTimeline::timelineWithTimer({});
    auto first = timeline->createVideoTrack();
    first->setClips({videoClip("A", 0, 1, "/d/media/a.mp4"), videoClip("B", 1, 2, "/d/media/b.mp4"),
                     videoClip("C", 2, 3, "/d/media/a.mp4")});
    auto second = timeline->createVideoTrack();
    second->addClip(videoClip("D", 0, 7, "/d/media/c.mp4"));
    EXPECT_NE(first->identifier(), second->identifier());
    EXPECT_EQ(timeline->duration(), 7);

    auto urls = timeline->allResourceURLs();
    std::sort(urls.begin(), urls.end());
    EXPECT_EQ(urls, (std::vector<std::filesystem::path>{"/d/media/a.mp4", "/d/media/b.mp4", "/d/media/c.mp4"}));

    FLKTimelineQuery query(timeline);
    EXPECT_EQ(query.numTracks(), 2u);
    EXPECT_EQ(query.numClipsForTrackAtIndex(0), 3u);
    EXPECT_EQ(query.numClipsForTrackAtIndex(1), 1u);
    EXPECT_EQ(query.numClipsForTrackAtIndex(2), 0u);

    timeline->removeTrack(first);
    EXPECT_EQ(query.numTracks(), 1u);
}

TEST(FLKTimeline, MappingASceneFeedsItsVideoSpriteFromTheFirstTrack) {
    auto scene = std::make_shared<FLKScene>();
    auto container = FLKVideoContainer::videoContainerWithFrame(FLKRect(0, 0, 100, 200));
    scene->addChild(container);

    auto timeline = FLKTimeline::timelineWithTimer({});
    timeline->mapScene(scene);  // no track yet, no video yet
    ASSERT_EQ(timeline->tracks().size(), 1u);
    auto sprite = std::dynamic_pointer_cast<FLKTimelineVideoSprite>(container->video());
    ASSERT_TRUE(sprite);
    EXPECT_EQ(sprite->provider(), std::dynamic_pointer_cast<FLKTextureProvider>(timeline->tracks()[0]));

    auto other = FLKTimeline::timelineWithTimer({});
    auto track = other->createVideoTrack();
    other->createVideoTrack();
    other->mapScene(scene);  // the sprite already there is reused
    EXPECT_EQ(container->video(), sprite);
    EXPECT_EQ(sprite->provider(), track);
}

// What an export plays: every track copied, video tracks with managers of
// their own, so playing the copy leaves the original's play head and buffers.
TEST_F(PlaybackTest, ACopyPlaysWithoutTouchingTheOriginal) {
    auto other = std::make_shared<FLKTimelineTrack>("other");
    other->addClip(std::make_shared<FLKPlaceholderClip>("P", FLKTimeRange{0, 3}));
    timeline->addTrack(other);
    timeline->setCurrentTime(1.5);
    video->buffering.clear();

    auto copyClock = std::make_shared<FLKFrameByFrameClock>(10, 30);
    auto copy = timeline->copyWithTimer(copyClock);
    EXPECT_FALSE(copy->isEqual(*timeline));
    EXPECT_EQ(copy->timer(), copyClock);
    EXPECT_DOUBLE_EQ(copy->duration(), 3.0);
    const auto tracks = copy->tracks();
    ASSERT_EQ(tracks.size(), 2u);
    auto copiedVideo = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(tracks[0]);
    ASSERT_TRUE(copiedVideo);
    EXPECT_NE(copiedVideo, track);
    EXPECT_EQ(copiedVideo->clips().size(), 1u);
    EXPECT_TRUE(flk::sameClip(copiedVideo->clips()[0], track->clips()[0]));
    ASSERT_EQ(managers.videoManagers.size(), 2u);
    EXPECT_EQ(copiedVideo->bufferManagers().video, managers.videoManagers[1]);
    EXPECT_EQ(tracks[1]->className(), "FLKTimelineTrack");
    EXPECT_EQ(tracks[1]->clips().size(), 1u);

    managers.videoManagers[1]->setAvailable({{0, 10}});
    copy->setCurrentTime(0);
    copy->play();
    for (int i = 0; i < 10; ++i) ASSERT_TRUE(copyClock->tick());
    EXPECT_DOUBLE_EQ(copy->currentTime(), 0.9);
    EXPECT_DOUBLE_EQ(timeline->currentTime(), 1.5);
    EXPECT_DOUBLE_EQ(track->currentTime(), 1.5);
    EXPECT_TRUE(video->buffering.empty());
    copy->pause();
}

TEST_F(PlaybackTest, PlaysToTheEndAndStops) {
    video->setAvailable({{0, 10}});
    EXPECT_FALSE(timeline->update(0.5));  // not playing: refused
    EXPECT_FALSE(clock->tick());

    timeline->play();
    EXPECT_TRUE(timeline->isPlaying());
    for (int i = 0; i < 15; ++i) ASSERT_TRUE(clock->tick());
    EXPECT_DOUBLE_EQ(timeline->currentTime(), 1.4);
    EXPECT_DOUBLE_EQ(track->currentTime(), 1.4);

    timeline->pause();
    EXPECT_FALSE(timeline->isPlaying());
    EXPECT_FALSE(clock->tick());  // no longer registered
    EXPECT_EQ(clock->currentFrame(), 15u);

    timeline->play();
    while (clock->currentFrame() < 20) ASSERT_TRUE(clock->tick());
    EXPECT_TRUE(clock->tick());  // 2.0 s: the end, taken, and playing stops
    EXPECT_FALSE(timeline->isPlaying());
    EXPECT_DOUBLE_EQ(timeline->currentTime(), 1.9);
}

TEST_F(PlaybackTest, LoopingStartsAgainFromZero) {
    video->setAvailable({{0, 10}});
    timeline->setLooping(true);
    timeline->setCurrentTime(1.5);
    timeline->play();
    EXPECT_TRUE(timeline->update(1.9));
    EXPECT_DOUBLE_EQ(timeline->currentTime(), 1.9);
    EXPECT_TRUE(timeline->update(2.0));
    EXPECT_TRUE(timeline->isPlaying());
    EXPECT_EQ(timeline->currentTime(), 0);
    EXPECT_EQ(track->currentTime(), 0);
}

TEST_F(PlaybackTest, WaitsForFramesByPollingTheTracks) {
    timeline->play();
    EXPECT_FALSE(clock->tick());
    EXPECT_NE(std::find(log.begin(), log.end(), "Waiting"), log.end());
    auto checker = timeline->readinessChecker();
    EXPECT_EQ(checker->status(), FLKTimelineTrackReadinessChecker::kNotReady);
    EXPECT_FALSE(timeline->isPlaying());
    EXPECT_FALSE(clock->tick());  // paused internally: off the clock

    mainQueue->runPending();
    EXPECT_EQ(checker->status(), FLKTimelineTrackReadinessChecker::kPolling);
    mainQueue->advanceBy(0.35);
    EXPECT_EQ(checker->status(), FLKTimelineTrackReadinessChecker::kPolling);
    EXPECT_FALSE(timeline->isPlaying());

    video->setAvailable({{1.25, 1.25}});
    mainQueue->advanceBy(0.03);
    EXPECT_FALSE(timeline->isPlaying());  // next poll at 0.4 s
    mainQueue->advanceBy(0.05);
    EXPECT_EQ(checker->status(), FLKTimelineTrackReadinessChecker::kBecameReady);
    EXPECT_TRUE(timeline->isPlaying());
    EXPECT_FALSE(checker->isPolling());
    EXPECT_TRUE(clock->tick());
    EXPECT_EQ(clock->currentFrame(), 1u);
}

// Play/Pause while waiting for frames pauses: the user asked for playing.
TEST_F(PlaybackTest, PausingWhileWaitingStaysPaused) {
    timeline->togglePlay();
    EXPECT_FALSE(clock->tick());
    EXPECT_FALSE(timeline->isPlaying());
    EXPECT_TRUE(timeline->isPlayingOrWaiting());
    mainQueue->runPending();
    EXPECT_TRUE(timeline->isPlayingOrWaiting());  // polling
    timeline->togglePlay();
    EXPECT_FALSE(timeline->isPlayingOrWaiting());
    EXPECT_EQ(timeline->readinessChecker()->status(), FLKTimelineTrackReadinessChecker::kIdle);

    video->setAvailable({{0, 10}});
    mainQueue->runPending();
    mainQueue->advanceBy(1.0);
    EXPECT_FALSE(timeline->readinessChecker()->isPolling());
    EXPECT_EQ(timeline->readinessChecker()->status(), FLKTimelineTrackReadinessChecker::kIdle);
    EXPECT_FALSE(timeline->isPlaying());
    timeline->togglePlay();
    EXPECT_TRUE(timeline->isPlaying());
}

// The clock's queue plays the timeline while the main thread edits its track.
TEST_F(PlaybackTest, PlaysOnTheDisplayClockWhileTheTrackIsEdited) {
    auto now = std::make_shared<std::atomic<double>>(0);
    auto displayClock = FLKClock::make([now] { return now->load(); });
    timeline->setTimer(displayClock);
    track->setClips({videoClip("A", 0, 50), videoClip("B", 50, 100)});
    video->setAvailable({{0, 100}});

    timeline->play();
    for (int i = 1; i <= 40; ++i) {
        now->store(i * 0.25);
        displayClock->update();
        auto b = std::static_pointer_cast<FLKVideoClip>(track->clipWithIdentifier("B"));
        if (i % 2) {
            track->trimClipRightFromTimelineTime(b, b->timeRange().end - 0.5);
        } else {
            track->addClip(videoClip("C" + std::to_string(i), track->duration(), track->duration() + 1));
        }
    }
    displayClock->clockQueue()->sync([] {});
    EXPECT_TRUE(timeline->isPlaying());
    EXPECT_GT(timeline->currentTime(), 0);
    EXPECT_LE(timeline->currentTime(), 10.0);
    EXPECT_EQ(track->clips().size(), 22u);
    timeline->pause();
    displayClock->clockQueue()->sync([] {});
}

// Moving the play head while playing: playing goes on from there, the clock's
// next tick does not put it back where the elapsed time since play() says.
TEST_F(PlaybackTest, AJumpWhilePlayingIsWhereTheClockCountsOnFrom) {
    auto now = std::make_shared<std::atomic<double>>(0);
    auto displayClock = FLKClock::make([now] { return now->load(); });
    timeline->setTimer(displayClock);
    track->setClips({videoClip("A", 0, 50)});
    video->setAvailable({{0, 50}});

    timeline->play();
    now->store(1.0);
    displayClock->update();
    displayClock->clockQueue()->sync([] {});
    EXPECT_NEAR(timeline->currentTime(), 1.0, 1e-9);

    timeline->setCurrentTime(30.0);
    now->store(1.5);
    displayClock->update();
    displayClock->clockQueue()->sync([] {});
    EXPECT_NEAR(timeline->currentTime(), 30.5, 1e-9);
    timeline->pause();
    displayClock->clockQueue()->sync([] {});
}

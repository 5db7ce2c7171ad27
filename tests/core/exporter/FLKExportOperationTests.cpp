#include <gtest/gtest.h>

#include <fstream>
#include <latch>
#include <mutex>
#include <numeric>
#include <thread>

#include "FLKExportTestSupport.h"
#include "FLKGIFTestSupport.h"
#include "core/exporter/FLKExportQueue.h"
#include "core/exporter/FLKExportVideoSanityChecker.h"
#include "core/exporter/FLKVideoRecorder.h"
#include "core/gpu/FLKContext.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKPlaceholderClip.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoBufferManager.h"

namespace fs = std::filesystem;

namespace {
// Counts the six export notifications in the order they arrive on the main queue.
class NotificationLog {
public:
    NotificationLog() {
        auto& center = FLKExportOperation::notificationCenter();
        for (const char* name :
             {FLKExportOperationDidStartNotification, FLKExportOperationDidUpdateNotification,
              FLKExportOperationDidFinishNotification, FLKExportQueueDidStartNotification,
              FLKExportQueueDidUpdateNotification, FLKExportQueueDidFinishNotification}) {
            observations_.emplace_back(center, center.addObserver(name, nullptr, [this](const FLKNotification& n) {
                                           names.push_back(n.name);
                                           senders.push_back(n.object);
                                       }));
        }
    }
    int count(const std::string& name) const { return static_cast<int>(std::count(names.begin(), names.end(), name)); }
    // Main thread only.
    std::vector<std::string> names;
    std::vector<const void*> senders;

private:
    std::vector<FLKObservation> observations_;
};

class RecordedFeedback : public FLKUserFeedback {
public:
    void beep() override {}
    void presentError(const FLKError& error) override {
        std::lock_guard lock(mutex);
        presented.push_back(error);
    }
    std::mutex mutex;
    std::vector<FLKError> presented;  // guarded by mutex
};

class FLKExportQueueTest : public ::testing::Test {
protected:
    void SetUp() override {
        mainQueue = std::make_shared<FLKRunLoopMainQueue>();
        FLKMainQueue::setMain(mainQueue);
        feedback = std::make_shared<RecordedFeedback>();
        FLKUserFeedback::setShared(feedback);
        folder = fs::path(std::getenv("FLICKWELL_HOME")) / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override { FLKUserFeedback::setShared(nullptr); }

    // Runs the main queue until the queue's session has ended (a generous
    // bound only keeps a broken build from hanging).
    void runUntilSessionEnds(const NotificationLog& log, int sessions = 1) {
        const bool ended = mainQueue->runUntil(
            [&] { return log.count(FLKExportQueueDidFinishNotification) >= sessions; }, 300);
        ASSERT_TRUE(ended);
        // Tasks run in order: once this one ran, everything posted before it did too.
        bool drained = false;
        mainQueue->post([&] { drained = true; });
        mainQueue->runUntil([&] { return drained; });
    }

    std::vector<std::optional<uint32_t>> exportNumberedClips(
        const std::function<void(FLKTimelineVideoTrack&, const std::shared_ptr<FLKVideoClip>&)>& arrange,
        const std::shared_ptr<FLKTimeline>& timeline, const FLKVideoOrientation& orientation = {});

    std::shared_ptr<FLKRunLoopMainQueue> mainQueue;
    std::shared_ptr<RecordedFeedback> feedback;
    fs::path folder;
};

std::shared_ptr<FLKTimeline> timelineOfLength(double seconds) {
    auto timeline = FLKTimeline::timelineWithTimer({});
    if (seconds > 0) {
        auto track = std::make_shared<FLKTimelineTrack>("Track");
        track->addClip(std::make_shared<FLKPlaceholderClip>("Clip", FLKTimeRange{0, seconds}));
        timeline->addTrack(track);
    }
    return timeline;
}

std::shared_ptr<FLKScene> gradientScene(const FLKRect& frame) {
    auto scene = std::make_shared<FLKScene>();
    scene->setMainCamera(FLKCamera::cameraWithFrame(frame));
    auto sprite = FLKColorGradientSprite::colorGradientSpriteWithColors(
        {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}});
    sprite->setShape(FLKPlane::planeWithFrame(frame));
    scene->addChild(sprite);
    return scene;
}

const FLKRect kFrame{0, 0, 160, 90};

std::shared_ptr<FLKExportOperation> mp4Operation(const FLKScene& scene, std::shared_ptr<FLKTimeline> timeline,
                                                 const fs::path& destination) {
    return FLKExportOperation::operationWithScene(scene, std::move(timeline), FLKExportTypeMP4, destination, kFrame,
                                                  kFrame.size, 30);
}

FLKExportSettings presetWithDurations(double minimum, double maximum) {
    return FLKExportSettings(FLKJSON{{"name", "App Preview"}, {"minDuration", minimum}, {"maxDuration", maximum}});
}
}  // namespace

TEST(FLKExportVideoSanityCheckerTest, OnlyDurationsOutsideThePresetLimitsAreIssues) {
    const auto preset = presetWithDurations(15, 30);
    const auto shortIssues = FLKExportVideoSanityChecker::issuesInVideo(*timelineOfLength(3.0), preset);
    ASSERT_EQ(shortIssues.size(), 1u);
    EXPECT_EQ(shortIssues[0].failureReason, "The video is too short at 3.0s for App Preview.");
    EXPECT_EQ(shortIssues[0].recoverySuggestion, "Minimum duration is 15.0s, make a longer video.");
    EXPECT_EQ(shortIssues[0].domain, kFLKExportSettingsErrorDomain);

    const auto longIssues = FLKExportVideoSanityChecker::issuesInVideo(30.04, preset);
    ASSERT_EQ(longIssues.size(), 1u);
    EXPECT_EQ(longIssues[0].failureReason, "The video is too long at 30.0s for App Preview.");
    EXPECT_EQ(longIssues[0].recoverySuggestion, "Maximum duration is 30.0s, trim the video.");

    EXPECT_TRUE(FLKExportVideoSanityChecker::issuesInVideo(15.0, preset).empty());
    EXPECT_TRUE(FLKExportVideoSanityChecker::issuesInVideo(30.0, preset).empty());
    EXPECT_TRUE(FLKExportVideoSanityChecker::issuesInVideo(*timelineOfLength(20.0), preset).empty());
}

// Operations that fail at once (an empty timeline) still make one session:
// one start, one finish after the third operation, all errors kept until the
// next session starts and shown to the user together.
TEST_F(FLKExportQueueTest, ASessionSpansEveryOperationAndCollectsTheirErrors) {
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    auto scene = gradientScene(kFrame);
    std::vector<std::shared_ptr<FLKExportOperation>> operations;
    for (int i = 0; i < 3; ++i) {
        operations.push_back(mp4Operation(*scene, timelineOfLength(0), folder / ("empty" + std::to_string(i) + ".mp4")));
        queue->addOperation(operations.back());
    }
    runUntilSessionEnds(log);

    EXPECT_EQ(log.count(FLKExportQueueDidStartNotification), 1);
    EXPECT_EQ(log.count(FLKExportQueueDidFinishNotification), 1);
    EXPECT_EQ(log.names.front(), FLKExportQueueDidStartNotification);
    EXPECT_EQ(log.names.back(), FLKExportQueueDidFinishNotification);
    EXPECT_EQ(log.senders.back(), queue.get());
    EXPECT_EQ(log.count(FLKExportOperationDidFinishNotification), 3);
    EXPECT_EQ(log.count(FLKExportOperationDidStartNotification), 0);
    for (const auto& operation : operations) {
        EXPECT_TRUE(operation->isFinished());
        ASSERT_TRUE(operation->error());
        EXPECT_EQ(operation->error()->failureReason, "The timeline is empty.");
    }
    EXPECT_EQ(queue->currentOperation(), nullptr);
    EXPECT_EQ(queue->exportErrors().size(), 3u);
    {
        std::lock_guard lock(feedback->mutex);
        ASSERT_EQ(feedback->presented.size(), 1u);
        EXPECT_EQ(feedback->presented[0].localizedDescription, "3 exports failed.");
    }
    EXPECT_TRUE(flktest::filesIn(folder).empty());

    queue->addOperation(mp4Operation(*scene, timelineOfLength(0), folder / "next.mp4"));
    runUntilSessionEnds(log, 2);
    EXPECT_EQ(queue->exportErrors().size(), 1u);  // the new session started clean
    EXPECT_EQ(log.count(FLKExportQueueDidStartNotification), 2);
}

// A writer's failure and the end of rendering can finish one operation at the
// same moment: its end is announced once.
TEST_F(FLKExportQueueTest, FinishersRacingAnnounceTheEndOnce) {
    NotificationLog log;
    auto scene = gradientScene(kFrame);
    constexpr int kOperations = 200;
    for (int i = 0; i < kOperations; ++i) {
        auto operation = mp4Operation(*scene, timelineOfLength(1.0), folder / "never.mp4");
        std::latch start(2);
        auto finish = [&] {
            start.arrive_and_wait();
            operation->markFinished();
        };
        std::thread other(finish);
        finish();
        other.join();
        EXPECT_TRUE(operation->isFinished());
    }
    bool drained = false;
    mainQueue->post([&] { drained = true; });
    mainQueue->runUntil([&] { return drained; });
    EXPECT_EQ(log.count(FLKExportOperationDidFinishNotification), kOperations);
}

// A small scene exported end to end: the file is H.264 High, 4:2:0, 30 fps,
// one frame per 1/30 s of the timeline, with an AAC track as long as the
// video (silence: the scene has no sound), index in front.
TEST_F(FLKExportQueueTest, ExportsAnMP4WithProgressAndASilentTrack) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    const fs::path destination = folder / "scene.mp4";
    auto operation = mp4Operation(*gradientScene(kFrame), timelineOfLength(1.0), destination);
    queue->addOperation(operation);
    runUntilSessionEnds(log);

    ASSERT_FALSE(operation->error()) << operation->error()->fullMessage();
    EXPECT_EQ(log.count(FLKExportOperationDidStartNotification), 1);
    EXPECT_EQ(log.count(FLKExportOperationDidUpdateNotification), 30);
    EXPECT_EQ(log.count(FLKExportQueueDidUpdateNotification), 30);
    EXPECT_EQ(log.count(FLKExportOperationDidFinishNotification), 1);
    EXPECT_DOUBLE_EQ(operation->progress(), 1.0);
    {
        std::lock_guard lock(feedback->mutex);
        EXPECT_TRUE(feedback->presented.empty());
    }

    const auto movie = flktest::probeMovie(destination);
    ASSERT_TRUE(movie.opened);
    EXPECT_EQ(movie.videoCodec, "h264");
    EXPECT_EQ(movie.profile, FF_PROFILE_H264_HIGH);
    EXPECT_EQ(movie.pixelFormat, "yuv420p");
    EXPECT_NEAR(movie.frameRate, 30.0, 1e-6);
    EXPECT_EQ(movie.width, 160);
    EXPECT_EQ(movie.height, 90);
    EXPECT_EQ(movie.videoPackets, 30);
    EXPECT_TRUE(movie.hasAAC);
    EXPECT_NEAR(movie.audioDuration, movie.videoDuration, 0.05);
    EXPECT_TRUE(flktest::moovBeforeMdat(destination));
    EXPECT_EQ(flktest::filesIn(folder), std::vector<fs::path>{destination});
}

// The scene's own sound is used and cut to the video's length.
TEST_F(FLKExportQueueTest, TheScenesSoundIsCutToTheVideo) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    const fs::path tone = folder.parent_path() / "tone.m4a";
    ASSERT_TRUE(FLKSyntheticVideo::writeTone(tone.string(), 3.0));
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    auto scene = gradientScene(kFrame);
    scene->addChild(FLKAudioTrack::audioTrackWithAudioURL(tone));
    const fs::path destination = folder / "sound.mp4";
    auto operation = mp4Operation(*scene, timelineOfLength(0.5), destination);
    queue->addOperation(operation);
    runUntilSessionEnds(log);

    ASSERT_FALSE(operation->error()) << operation->error()->fullMessage();
    const auto movie = flktest::probeMovie(destination);
    EXPECT_EQ(movie.videoPackets, 15);
    EXPECT_TRUE(movie.hasAAC);
    EXPECT_NEAR(movie.audioDuration, 0.5, 0.05);
}

// Bad destinations fail with a clear error and leave nothing behind; the
// queue goes on with the next operation.
TEST_F(FLKExportQueueTest, AFailedExportDoesNotStopTheQueue) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    fs::create_directories(folder / "taken.mp4");
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    auto scene = gradientScene(kFrame);
    auto missingFolder = mp4Operation(*scene, timelineOfLength(0.2), folder / "missing" / "a.mp4");
    auto isAFolder = mp4Operation(*scene, timelineOfLength(0.2), folder / "taken.mp4");
    auto good = mp4Operation(*scene, timelineOfLength(0.2), folder / "good.mp4");
    for (const auto& operation : {missingFolder, isAFolder, good}) queue->addOperation(operation);
    runUntilSessionEnds(log);

    ASSERT_TRUE(missingFolder->error());
    EXPECT_NE(missingFolder->error()->failureReason.find("does not exist"), std::string::npos);
    ASSERT_TRUE(isAFolder->error());
    EXPECT_NE(isAFolder->error()->failureReason.find("is a folder"), std::string::npos);
    EXPECT_FALSE(good->error());
    EXPECT_EQ(flktest::probeMovie(folder / "good.mp4").videoPackets, 6);
    EXPECT_FALSE(fs::exists(folder / "missing"));
    EXPECT_TRUE(fs::is_empty(folder / "taken.mp4"));
    EXPECT_EQ(log.count(FLKExportQueueDidFinishNotification), 1);
    std::lock_guard lock(feedback->mutex);
    ASSERT_EQ(feedback->presented.size(), 1u);
    EXPECT_EQ(feedback->presented[0].localizedDescription, "2 exports failed.");
}

// Cancelling: an operation still waiting never starts, a running one stops
// as soon as it writes; neither leaves a file or an error, and one that has
// finished cannot be cancelled any more.
TEST_F(FLKExportQueueTest, CancelledExportsLeaveNothingBehind) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    auto scene = gradientScene(kFrame);
    auto running = mp4Operation(*scene, timelineOfLength(20.0), folder / "running.mp4");
    auto waiting = mp4Operation(*scene, timelineOfLength(1.0), folder / "waiting.mp4");
    auto& center = FLKExportOperation::notificationCenter();
    FLKObservation started(center, center.addObserver(FLKExportOperationDidStartNotification, running.get(),
                                                      [&](const FLKNotification&) { EXPECT_TRUE(running->cancel()); }));
    queue->addOperation(running);
    queue->addOperation(waiting);
    EXPECT_TRUE(waiting->cancel());
    runUntilSessionEnds(log);

    for (const auto& operation : {running, waiting}) {
        EXPECT_TRUE(operation->isFinished());
        EXPECT_TRUE(operation->isCancelled());
        EXPECT_FALSE(operation->error());
        EXPECT_FALSE(operation->cancel());
    }
    EXPECT_LT(running->progress(), 1.0);
    EXPECT_EQ(log.count(FLKExportOperationDidStartNotification), 1);  // the waiting one never started
    EXPECT_TRUE(flktest::filesIn(folder).empty());
    EXPECT_TRUE(queue->exportErrors().empty());
    std::lock_guard lock(feedback->mutex);
    EXPECT_TRUE(feedback->presented.empty());
}

// GIFs at several rates queued together: each has the delays of its own
// rate and lasts as long as the timeline; a rate above the rendering one is
// written at the rendering rate.
TEST_F(FLKExportQueueTest, GIFsOfOneSessionEachLastTheTimelineAtTheirOwnRate) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    auto scene = gradientScene(kFrame);
    const std::vector<std::uint64_t> rates = {15, 10, 50};
    std::vector<std::shared_ptr<FLKExportOperation>> operations;
    for (std::uint64_t fps : rates) {
        operations.push_back(FLKExportOperation::operationWithScene(*scene, timelineOfLength(1.0), FLKExportTypeGIF,
                                                                    folder / ("scene" + std::to_string(fps) + ".gif"),
                                                                    kFrame, {80, 46}, 30));
        operations.back()->setOutputFps(fps);
        queue->addOperation(operations.back());
    }
    runUntilSessionEnds(log);

    const std::vector<size_t> frames = {15, 10, 30};
    for (size_t i = 0; i < operations.size(); ++i) {
        ASSERT_FALSE(operations[i]->error()) << operations[i]->error()->fullMessage();
        const flktest::DecodedGIF gif = flktest::decodeGIF(operations[i]->destinationURL());
        ASSERT_TRUE(gif.ok) << rates[i];
        EXPECT_EQ(gif.version, "GIF89a");
        EXPECT_EQ(gif.delays.size(), frames[i]) << rates[i] << " fps";
        EXPECT_EQ(std::accumulate(gif.delays.begin(), gif.delays.end(), 0), 100) << rates[i] << " fps";
    }
    EXPECT_EQ(flktest::decodeGIF(operations[1]->destinationURL()).delays, std::vector<int>(10, 10));
    EXPECT_EQ(log.count(FLKExportOperationDidFinishNotification), 3);
}

// Frames wider than the GPU's textures cannot be rendered (a GIF may be that
// wide): the export fails with the reason, rather than its render thread
// waiting for ever, and leaves nothing at the destination.
TEST_F(FLKExportQueueTest, AnExportWhoseFramesCannotBeRenderedFails) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    NotificationLog log;
    auto queue = FLKExportQueue::make();
    const fs::path destination = folder / "wide.gif";
    auto operation = FLKExportOperation::operationWithScene(*gradientScene(kFrame), timelineOfLength(1.0),
                                                            FLKExportTypeGIF, destination, kFrame, {20000, 8}, 30);
    queue->addOperation(operation);
    runUntilSessionEnds(log);

    ASSERT_TRUE(operation->error());
    EXPECT_NE(operation->error()->fullMessage().find("20000 x 8"), std::string::npos)
        << operation->error()->fullMessage();
    EXPECT_FALSE(fs::exists(destination));
    EXPECT_EQ(log.count(FLKExportOperationDidFinishNotification), 1);
}

// Exports a 320 x 240 scene showing the video track that `arrange` fills
// with clips of a 30-frame numbered recording stored with `orientation`; the
// first number of each frame.
std::vector<std::optional<uint32_t>> FLKExportQueueTest::exportNumberedClips(
    const std::function<void(FLKTimelineVideoTrack&, const std::shared_ptr<FLKVideoClip>&)>& arrange,
    const std::shared_ptr<FLKTimeline>& timeline, const FLKVideoOrientation& orientation) {
    FLKTimelineVideoBufferManager::installAsTrackBufferManagers();
    const fs::path recording = folder / "numbered.mp4";
    FLKSyntheticVideo::Options options;
    options.frameCount = 30;
    options.orientation = orientation;
    EXPECT_TRUE(FLKSyntheticVideo::writeVideo(recording.string(), options));

    const FLKRect frame{0, 0, 320, 240};
    auto scene = std::make_shared<FLKScene>();
    scene->setMainCamera(FLKCamera::cameraWithFrame(frame));
    scene->addChild(FLKVideoContainer::videoContainerWithFrame(frame));
    auto track = timeline->createVideoTrack();
    arrange(*track, track->createClipWithVideoURL(recording));
    timeline->mapScene(scene);
    timeline->setCurrentTime(0.5);

    NotificationLog log;
    auto queue = FLKExportQueue::make();
    const fs::path destination = folder / "video.mp4";
    auto operation = FLKExportOperation::operationWithScene(*scene, timeline, FLKExportTypeMP4, destination, frame,
                                                            frame.size, 30);
    queue->addOperation(operation);
    runUntilSessionEnds(log);
    FLKTimelineVideoTrack::setBufferManagersFactory({});

    EXPECT_FALSE(operation->error()) << operation->error()->fullMessage();
    const auto movie = flktest::probeMovie(destination, 30);
    EXPECT_EQ(movie.videoPackets, 30);
    return movie.firstNumbers;
}

// The numbers of a whole 30-frame recording exported on its own.
static void expectTheRecordingInOrder(const std::vector<std::optional<uint32_t>>& numbers) {
    ASSERT_EQ(numbers.size(), 30u);
    // Frame k of the file is rendered at (k + 1) / 30 s, where the decoded
    // frame k (one period away, first in ring order) or k + 1 answers. The
    // last one is rendered at the end, which stops the timeline where it stood.
    uint32_t previous = 0;
    for (uint32_t k = 0; k < 30; ++k) {
        ASSERT_TRUE(numbers[k]) << "frame " << k << " shows no number";
        const uint32_t shown = *numbers[k];
        const uint32_t lowest = k == 29 ? 28 : k;
        EXPECT_TRUE(shown >= lowest && shown <= k + 1) << "frame " << k << " shows " << shown;
        EXPECT_GE(shown, previous) << "frame " << k;
        previous = shown;
    }
}

// A recording on the editor's timeline is exported through a copy of that
// timeline with readers of its own: the file shows the recording's frames in
// order, and the editor's play head stays where it was.
TEST_F(FLKExportQueueTest, ExportsTheTimelinesVideoWithoutMovingTheEditorsPlayHead) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    auto timeline = FLKTimeline::timelineWithTimer({});
    const auto numbers = exportNumberedClips(
        [](FLKTimelineVideoTrack& track, const std::shared_ptr<FLKVideoClip>& whole) { track.addClip(whole); },
        timeline);
    EXPECT_DOUBLE_EQ(timeline->currentTime(), 0.5);
    EXPECT_DOUBLE_EQ(timeline->tracks().front()->currentTime(), 0.5);
    expectTheRecordingInOrder(numbers);
}

// A phone's recording stored on its side: the export shows it upright (its
// numbers read across the top of each frame).
TEST_F(FLKExportQueueTest, RecordingsStoredOnTheirSideAreExportedUpright) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    const auto numbers = exportNumberedClips(
        [](FLKTimelineVideoTrack& track, const std::shared_ptr<FLKVideoClip>& whole) { track.addClip(whole); },
        FLKTimeline::timelineWithTimer({}), FLKVideoOrientation(90, false));
    expectTheRecordingInOrder(numbers);
}

// The second half of the recording first, then the first half: an export lets
// shown frames go only where nothing earlier is asked for later.
TEST_F(FLKExportQueueTest, ClipsGoingBackInTheirRecordingShowTheirOwnFrames) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    const auto numbers = exportNumberedClips(
        [](FLKTimelineVideoTrack& track, const std::shared_ptr<FLKVideoClip>& whole) {
            track.addClip(std::make_shared<FLKVideoClip>("late", whole->media(), FLKTimeRange{0, 0.5},
                                                         FLKTimeRange{0.5, 1.0}));
            track.addClip(std::make_shared<FLKVideoClip>("early", whole->media(), FLKTimeRange{0.5, 1.0},
                                                         FLKTimeRange{0, 0.5}));
            EXPECT_FALSE(track.showsEachRecordingForward());
        },
        FLKTimeline::timelineWithTimer({}));
    ASSERT_EQ(numbers.size(), 30u);
    for (uint32_t k = 0; k < 29; ++k) {
        ASSERT_TRUE(numbers[k]) << "frame " << k << " shows no number";
        if (k == 14) continue;  // at the seam either clip may answer
        // Rendered at (k + 1) / 30 s: the late half maps it to k + 16, the early one to k - 14.
        const uint32_t expected = k + 1 < 15 ? k + 16 : k - 14;
        EXPECT_LE(std::abs(static_cast<int>(*numbers[k]) - static_cast<int>(expected)), 1)
            << "frame " << k << " shows " << *numbers[k];
    }
}

// The render thread waits on the decoders themselves, not on a readiness poll
// that only the main queue runs: an export of a recording completes while the
// main queue stands still (where it did not, this test hangs until CTest's
// time-out). Every stage's CPU is accounted for on the way.
TEST_F(FLKExportQueueTest, ARecordingIsExportedWhileTheMainQueueStandsStill) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    FLKTimelineVideoBufferManager::installAsTrackBufferManagers();
    const fs::path recording = folder / "numbered.mp4";
    FLKSyntheticVideo::Options options;
    options.frameCount = 30;
    ASSERT_TRUE(FLKSyntheticVideo::writeVideo(recording.string(), options));
    const FLKRect frame{0, 0, 320, 240};
    auto scene = std::make_shared<FLKScene>();
    scene->setMainCamera(FLKCamera::cameraWithFrame(frame));
    scene->addChild(FLKVideoContainer::videoContainerWithFrame(frame));
    auto timeline = FLKTimeline::timelineWithTimer({});
    auto track = timeline->createVideoTrack();
    track->addClip(track->createClipWithVideoURL(recording));
    timeline->mapScene(scene);

    auto operation = FLKExportOperation::operationWithScene(*scene, timeline, FLKExportTypeMP4, folder / "video.mp4",
                                                            frame, frame.size, 30);
    operation->execute();
    operation->waitUntilFinished();
    FLKTimelineVideoTrack::setBufferManagersFactory({});
    ASSERT_FALSE(operation->error()) << operation->error()->fullMessage();
    EXPECT_EQ(flktest::probeMovie(folder / "video.mp4").videoPackets, 30);

    EXPECT_EQ(operation->renderedFrames(), 31u);
    const auto times = operation->stageTimes();
    for (int stage = 0; stage < FLKStageTimes::kStageCount; ++stage) {
        EXPECT_GT(times.cpuNs[stage], 0) << FLKStageTimes::stageName(static_cast<FLKStageTimes::Stage>(stage));
    }
    EXPECT_NE(times.report(31, 2).find("bound on 2 cores"), std::string::npos);
    // The notifications still queued hold the operation: let them go here, not with the queue.
    bool drained = false;
    mainQueue->post([&] { drained = true; });
    mainQueue->runUntil([&] { return drained; });
}

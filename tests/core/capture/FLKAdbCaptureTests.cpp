// A phone over adb, played by a stand-in adb that streams a real H.264 test
// pattern through "screenrecord" and ends it as the real one does at its limit.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "FLKCaptureTestSupport.h"
#include "core/capture/FLKAdb.h"
#include "core/capture/FLKAdbCaptureInput.h"
#include "core/capture/FLKAdbDeviceProvider.h"
#include "core/capture/FLKAdbStreamParser.h"
#include "core/capture/FLKCaptureDecoder.h"
#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/capture/FLKMobileDevice.h"
#include "core/platform/FLKLocalStore.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/scene/FLKRealtimeVideoSprite.h"

namespace {

constexpr int kClipFrames = 24;  // 0.8 s a "time limit"
// A safety net against a hang; the tests wait on events, never on time.
constexpr double kGiveUp = 60;

struct AdbCaptureTest : ::testing::Test {
    std::filesystem::path folder = flk::temporaryHome() / "adb-standin";
    std::filesystem::path clip = folder / "pattern.h264";
    std::shared_ptr<FLKRunLoopMainQueue> queue = std::make_shared<FLKRunLoopMainQueue>();

    void SetUp() override {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        ASSERT_TRUE(flk::test::makeTestPattern(clip, kClipFrames, 320, 240));
        ::setenv("FLICKWELL_ADB", FLK_ADB_STANDIN, 1);
        ::setenv("FLK_STANDIN_STREAM", clip.c_str(), 1);
        ::setenv("FLK_STANDIN_STATE", folder.c_str(), 1);
    }
    void TearDown() override {
        ::unsetenv("FLICKWELL_ADB");
        ::unsetenv("FLK_STANDIN_HOLD");
        queue->runUntil([] { return false; }, 0);
    }
    int runs() const {
        std::ifstream in(folder / "runs");
        int count = 0;
        std::string line;
        while (std::getline(in, line)) ++count;
        return count;
    }
    std::shared_ptr<FLKDevice> phone() {
        auto devices = FLKAdbDeviceProvider().devices();
        return devices.empty() ? nullptr : devices.front();
    }
};

}  // namespace

TEST_F(AdbCaptureTest, ListsThePhoneThroughTheConfiguredProgram) {
    auto device = phone();
    ASSERT_TRUE(device);
    EXPECT_EQ(device->name(), "Standin Phone");
    EXPECT_EQ(device->uniqueIdentifier(), "STANDIN01");
    EXPECT_EQ(device->kind(), "adb");
    ::setenv("FLICKWELL_ADB", (folder / "no-such-adb").c_str(), 1);
    FLKError error;
    EXPECT_FALSE(flk::adb::listDevices(&error));
    EXPECT_NE(error.fullMessage().find("adb was not found"), std::string::npos);
}

TEST_F(AdbCaptureTest, TrackingHearsThePhoneListWithoutAskingAgain) {
    FLKAdbDeviceProvider provider;
    std::atomic<int> changes = 0;
    provider.startWatching([&] {
        ++changes;
        queue->post([] {});
    });
    // Before the tracker's first list the caller gets none rather than waiting on adb.
    (void)provider.devices();
    ASSERT_TRUE(queue->runUntil([&] { return changes > 0; }, kGiveUp));
    std::ifstream calls(folder / "calls");
    for (std::string call; std::getline(calls, call);) EXPECT_EQ(call, "track-devices");
    // The tracked list is what devices() answers now, even once adb is gone.
    ::setenv("FLICKWELL_ADB", (folder / "no-such-adb").c_str(), 1);
    auto devices = provider.devices();
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices[0]->uniqueIdentifier(), "STANDIN01");
    provider.stopWatching();
    EXPECT_TRUE(provider.devices().empty());  // asked afresh: no adb, no phones
}

TEST_F(AdbCaptureTest, PreviewReachesTheSpriteAndTheRecordingKeepsThePhonesPictures) {
    auto device = phone();
    ASSERT_TRUE(device);
    auto delegate = std::make_shared<flk::test::RecordingDelegate>();
    auto store = FLKDeviceScreenRecorder::recentlyRecordedStore();
    auto recorder = FLKDeviceScreenRecorder::make(device, delegate, store, queue);
    auto sprite = FLKRealtimeVideoSprite::realtimeVideoSprite();
    recorder->setOutput(sprite);
    recorder->preview();
    ASSERT_TRUE(queue->runUntil([&] { return sprite->imageBuffer() != nullptr; }, kGiveUp));
    EXPECT_TRUE(delegate->saw("ready"));
    EXPECT_TRUE(delegate->saw("preview"));
    EXPECT_TRUE(recorder->hasPreview());
    EXPECT_EQ(recorder->deviceSize().width, 320);
    EXPECT_EQ(recorder->deviceSize().height, 240);
    EXPECT_EQ(sprite->imageBuffer()->width, 320);

    recorder->record();
    recorder->record();  // once only
    EXPECT_TRUE(recorder->isRecording());
    EXPECT_EQ(std::count(delegate->events.begin(), delegate->events.end(), "start"), 1);
    recorder->setIsPreviewPaused(true);  // ignored while recording
    EXPECT_FALSE(recorder->isPreviewPaused());
    // Past two of the stand-in's time limits: screenrecord is started again each time.
    int runsAtRecord = runs();
    ASSERT_TRUE(queue->runUntil([&] { return recorder->framesRecorded() >= 2 * kClipFrames + 2; }, kGiveUp));
    EXPECT_GE(runs(), runsAtRecord + 3);  // the one record asked for, and two after time limits
    auto result = flk::test::finishRecording(*recorder, *queue);
    ASSERT_TRUE(result);
    EXPECT_TRUE(delegate->saw("finish"));
    EXPECT_FALSE(std::filesystem::exists(result->string() + ".part"));

    // Every picture of the recording is one of the pattern's, decoded bit for
    // bit, in order; each new run starts the pattern again at its first picture.
    auto pattern = flk::test::decodeAll(clip);
    auto recorded = flk::test::decodeAll(*result);
    ASSERT_EQ(pattern.size(), static_cast<size_t>(kClipFrames));
    ASSERT_GE(recorded.size(), static_cast<size_t>(2 * kClipFrames));
    size_t next = 0;
    int restarts = 0;
    for (size_t i = 0; i < recorded.size(); ++i) {
        if (next < pattern.size() && flk::test::samePixels(*recorded[i].pixels, *pattern[next].pixels)) {
            ++next;
            continue;
        }
        ASSERT_TRUE(flk::test::samePixels(*recorded[i].pixels, *pattern[0].pixels)) << "picture " << i;
        ASSERT_EQ(next, pattern.size()) << "a run was cut short before picture " << i;
        ++restarts;
        next = 1;
    }
    EXPECT_GE(restarts, 1);
    // Time runs forward through the restarts.
    for (size_t i = 1; i < recorded.size(); ++i) EXPECT_GT(recorded[i].time, recorded[i - 1].time);

    // Kept under a name in the store of recordings, and the working file goes.
    recorder->saveRecordingWithName("Standin take");
    ASSERT_TRUE(delegate->savedURL);
    EXPECT_EQ(*delegate->savedURL, store->createFileURLWithName("Standin take"));
    EXPECT_EQ(flk::test::decodeAll(*delegate->savedURL).size(), recorded.size());
    EXPECT_FALSE(std::filesystem::exists(*result));
}

// A still phone screen sends nothing after a picture: the picture must not
// wait for the next one to begin.
TEST_F(AdbCaptureTest, APictureIsShownOnceItsOwnBytesAreIn) {
    const auto single = folder / "single.h264";
    ASSERT_TRUE(flk::test::makeTestPattern(single, 1, 320, 240));
    ::setenv("FLK_STANDIN_STREAM", single.c_str(), 1);
    ::setenv("FLK_STANDIN_HOLD", "1", 1);
    auto device = phone();
    ASSERT_TRUE(device);
    auto recorder = FLKDeviceScreenRecorder::make(device, std::make_shared<flk::test::RecordingDelegate>(),
                                                  FLKDeviceScreenRecorder::recentlyRecordedStore(), queue);
    auto sprite = FLKRealtimeVideoSprite::realtimeVideoSprite();
    recorder->setOutput(sprite);
    recorder->preview();
    ASSERT_TRUE(queue->runUntil([&] { return sprite->imageBuffer() != nullptr; }, kGiveUp));
    EXPECT_TRUE(flk::test::samePixels(*sprite->imageBuffer(), *flk::test::decodeAll(single).at(0).pixels));
    recorder->finishAndCleanup();
}

// Read boundaries anywhere, each taken for the end of a picture: the
// recording still gets the stream's access units byte for byte, and the
// preview every picture once, in order, decoded exactly.
TEST_F(AdbCaptureTest, GuessedPictureEndsNeverCostAPictureOrAByte) {
    std::ifstream in(clip, std::ios::binary);
    const std::vector<uint8_t> stream((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const auto pattern = flk::test::decodeAll(clip);
    ASSERT_EQ(pattern.size(), static_cast<size_t>(kClipFrames));
    // Whole pictures, cuts inside NAL units, and one byte at a time at the start.
    for (size_t chunk : {stream.size(), size_t(997), size_t(4093), size_t(1)}) {
        std::string reason;
        auto decoder = FLKCaptureDecoder::make(AV_CODEC_ID_H264, &reason, FLKCaptureDecoder::kPartialPictures);
        ASSERT_TRUE(decoder) << reason;
        std::vector<FLKCapturedFrame> frames;
        FLKAdbStreamParser parser(std::move(decoder), [&](FLKCapturedFrame frame) { frames.push_back(std::move(frame)); },
                                  [] { return 0.0; });
        parser.beginStream();
        for (size_t at = 0; at < stream.size();) {
            const size_t n = std::min(chunk == 1 && at > 2000 ? size_t(4096) : chunk, stream.size() - at);
            parser.append(stream.data() + at, n, true);
            at += n;
        }
        parser.endStream();
        std::vector<uint8_t> recorded;
        size_t shown = 0;
        for (const auto& frame : frames) {
            for (const auto& packet : frame.packets) recorded.insert(recorded.end(), packet->data.begin(), packet->data.end());
            if (frame.alreadyShown) continue;
            ASSERT_LT(shown, pattern.size()) << "chunks of " << chunk;
            EXPECT_TRUE(flk::test::samePixels(*frame.pixels, *pattern[shown].pixels)) << "picture " << shown << ", chunks of " << chunk;
            ++shown;
        }
        EXPECT_EQ(shown, pattern.size()) << "chunks of " << chunk;
        EXPECT_TRUE(recorded == stream) << "chunks of " << chunk;
    }
}

TEST_F(AdbCaptureTest, QuittingFinishesTheRecordingAndDeletesWhatWasNotKept) {
    auto delegate = std::make_shared<flk::test::RecordingDelegate>();
    auto recorder = FLKDeviceScreenRecorder::make(phone(), delegate, FLKDeviceScreenRecorder::recentlyRecordedStore(),
                                                  queue);
    recorder->preview();
    ASSERT_TRUE(queue->runUntil([&] { return recorder->hasPreview(); }, kGiveUp));
    recorder->record();
    ASSERT_TRUE(queue->runUntil([&] { return recorder->framesRecorded() >= 3; }, kGiveUp));
    FLKNotificationCenter::defaultCenter().post(kFLKApplicationWillTerminateNotification);
    EXPECT_FALSE(recorder->isRecording());
    ASSERT_TRUE(queue->runUntil([&] { return delegate->saw("finish"); }, kGiveUp));
    queue->runUntil([] { return false; }, 0);
    EXPECT_FALSE(std::filesystem::exists(recorder->temporaryDestinationURL()));
    EXPECT_FALSE(std::filesystem::exists(recorder->temporaryDestinationURL().string() + ".part"));
}

TEST_F(AdbCaptureTest, AnUnpluggedPhoneIsReportedOnceAsGoneAndTheRecordingIsKept) {
    auto device = phone();
    ASSERT_TRUE(device);
    auto delegate = std::make_shared<flk::test::RecordingDelegate>();
    auto recorder = FLKDeviceScreenRecorder::make(device, delegate, FLKDeviceScreenRecorder::recentlyRecordedStore(),
                                                  queue);
    auto probe = std::make_shared<flk::test::PixelProbe>();
    recorder->setOutput(probe);
    recorder->preview();
    ASSERT_TRUE(queue->runUntil([&] { return !probe->times.empty(); }, kGiveUp));
    recorder->record();
    ASSERT_TRUE(queue->runUntil([&] { return recorder->framesRecorded() >= 5; }, kGiveUp));
    std::ofstream(folder / "unplugged") << "gone\n";
    ASSERT_TRUE(queue->runUntil([&] { return !delegate->errors.empty(); }, kGiveUp));
    EXPECT_EQ(delegate->errors[0].code, flk::capture::kErrorDeviceWasDisconnected);
    auto result = flk::test::finishRecording(*recorder, *queue);
    ASSERT_TRUE(result);
    EXPECT_GE(flk::test::decodeAll(*result).size(), 5u);
    // Silence after the error: not even the finish was told.
    EXPECT_EQ(std::count(delegate->events.begin(), delegate->events.end(), "failed"), 1);
    EXPECT_FALSE(delegate->saw("finish"));
}

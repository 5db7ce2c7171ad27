// The recording inspector's rules: what keeping, naming, failing and scene
// loads do, in virtual time, with the scene's changes and the user's alerts noted.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKDeviceFinder.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/capture/FLKHandFedDeviceProvider.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneModifying.h"
#include "core/platform/FLKLocalStore.h"
#include "core/platform/FLKManualMainQueue.h"
#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKTimelineQuery.h"
#include "editing/FLKRecentlyRecordedItemViewModel.h"
#include "editing/FLKRecordButtonViewModel.h"
#include "editing/FLKRecordingDevicesDropDownViewModel.h"
#include "editing/FLKRecordingPanelViewModel.h"
#include "editing/FLKRecordingItemMenuViewModel.h"
#include "editing/FLKSaveRecordingSheetPresenting.h"

namespace {

// Notes what the inspector asks of the scene.
class NotedScene : public FLKSceneModifying {
public:
    void addChild(const FLKObject::Ptr&) override {}
    std::shared_ptr<FLKTexturedSprite> loadBackgroundSpriteWithImageURL(const std::filesystem::path&, const FLKRect&,
                                                                       FLKError*) override {
        return nullptr;
    }
    std::shared_ptr<FLKVideoContainer> loadVideoWithURL(const std::filesystem::path& url) override {
        calls.push_back("video " + url.filename().string());
        return nullptr;
    }
    std::shared_ptr<FLKAudioTrack> loadAudioWithURL(const std::filesystem::path& url) override {
        calls.push_back("audio " + url.filename().string());
        return nullptr;
    }
    void unloadAudio() override { calls.push_back("unload audio"); }
    std::shared_ptr<FLKRealtimeVideoSprite> loadRealtimeSpriteForDevice(const FLKDevice& device) override {
        calls.push_back("live " + device.uniqueIdentifier());
        return FLKRealtimeVideoSprite::realtimeVideoSprite();
    }
    void focusCamera() override {}
    void setCamera(const std::shared_ptr<FLKCamera>&) override {}
    std::vector<std::string> calls;
};

class NotedFeedback : public FLKUserFeedback {
public:
    void beep() override {}
    void presentError(const FLKError& error) override { errors.push_back(error); }
    std::vector<FLKError> errors;
};

class NotedSheets : public FLKSaveRecordingSheetPresenting {
public:
    void presentSaveRecordingSheet(std::weak_ptr<FLKSaveRecordingSheetDelegate>, const std::string& name) override {
        shown.push_back(name);
    }
    void dismissSaveRecordingSheet() override { ++dismissed; }
    std::vector<std::string> shown;
    int dismissed = 0;
};

bool makeClip(const std::filesystem::path& file, bool withAudio) {
    std::filesystem::create_directories(file.parent_path());
    std::string command = "ffmpeg -nostdin -hide_banner -loglevel error -y -f lavfi -i testsrc2=size=64x48:rate=30 " +
                          std::string(withAudio ? "-f lavfi -i sine=frequency=440:sample_rate=44100 " : "") +
                          "-t 0.5 -c:v libx264 -pix_fmt yuv420p " + (withAudio ? "-c:a aac -shortest " : "") + "'" +
                          file.string() + "'";
    return std::system(command.c_str()) == 0;
}

struct InspectorTest : ::testing::Test {
    std::shared_ptr<FLKManualMainQueue> queue = std::make_shared<FLKManualMainQueue>();
    std::shared_ptr<flk::test::HandFedDeviceProvider> phones = std::make_shared<flk::test::HandFedDeviceProvider>(false);
    std::shared_ptr<flk::test::HandFedDeviceProvider> monitors = std::make_shared<flk::test::HandFedDeviceProvider>(true);
    FLKDeviceFinder finder{{phones}, {monitors}, queue};
    std::shared_ptr<NotedScene> scene = std::make_shared<NotedScene>();
    std::shared_ptr<NotedFeedback> feedback = std::make_shared<NotedFeedback>();
    std::shared_ptr<NotedSheets> sheets = std::make_shared<NotedSheets>();
    std::shared_ptr<FLKRecordingPanelViewModel> inspector;

    void SetUp() override {
        FLKMainQueue::setMain(queue);
        FLKUserFeedback::setShared(feedback);
        // No phone can really be opened here: its capture fails quietly in the queue, never run.
        ::setenv("FLICKWELL_ADB", "/nonexistent/adb", 1);
        monitors->add("hdmi");
        phones->add("R58");
        inspector = FLKRecordingPanelViewModel::make("recording", {&finder, queue, sheets});
        inspector->setSceneModifier(scene);
    }
    void TearDown() override {
        inspector.reset();
        queue->advanceBy(10);
        FLKUserFeedback::setShared(nullptr);
        FLKMainQueue::setMain(nullptr);
        ::unsetenv("FLICKWELL_ADB");
    }
};

}  // namespace

TEST_F(InspectorTest, ChoosingADeviceStartsAPreviewAndNoDeviceStopsIt) {
    auto dropDown = inspector->dropDownViewModel();
    EXPECT_EQ(inspector->recordButtonViewModel()->recordingState(), FLKRecordButtonViewModel::kHidden);
    dropDown->setCurrentDeviceIndex(1);  // the phone
    ASSERT_TRUE(inspector->isPreviewing());
    EXPECT_EQ(inspector->recorder()->device()->uniqueIdentifier(), "R58");
    EXPECT_EQ(inspector->recordButtonViewModel()->recordingState(), FLKRecordButtonViewModel::kPreparing);
    inspector->recorderIsReady(*inspector->recorder());
    EXPECT_EQ(inspector->recordButtonViewModel()->recordingState(), FLKRecordButtonViewModel::kReady);
    inspector->recorderDidStartPreview(*inspector->recorder());
    EXPECT_EQ(scene->calls, std::vector<std::string>{"live R58"});
    EXPECT_TRUE(inspector->recorder()->output());
    dropDown->deselectDevice();
    EXPECT_FALSE(inspector->isPreviewing());
    EXPECT_EQ(inspector->recordButtonViewModel()->recordingState(), FLKRecordButtonViewModel::kHidden);
}

TEST_F(InspectorTest, ChoosingADeviceWhileARecordingIsBeingNamedKeepsTheRecorder) {
    inspector->dropDownViewModel()->setCurrentDeviceIndex(1);
    auto recorder = inspector->recorder();
    ASSERT_TRUE(recorder);
    inspector->recorderDidFinish(*recorder);
    EXPECT_EQ(inspector->recordButtonViewModel()->recordingState(), FLKRecordButtonViewModel::kFinished);
    EXPECT_TRUE(inspector->isSavingRecording());
    EXPECT_EQ(sheets->shown.size(), 1u);
    inspector->dropDownViewModel()->setCurrentDeviceIndex(2);  // the monitor
    EXPECT_EQ(inspector->recorder(), recorder);
    inspector->sheetDidCancel();
    EXPECT_EQ(sheets->dismissed, 1);
    EXPECT_FALSE(inspector->isPreviewing());  // cancelled: the device is let go, nothing kept
}

TEST_F(InspectorTest, NamingWithoutARecorderSaysTheRecordingIsLost) {
    inspector->sheetDidSaveWithName("Take");
    queue->runPending();
    ASSERT_EQ(feedback->errors.size(), 1u);
    EXPECT_EQ(feedback->errors[0].localizedDescription, "Cannot find recording.");
    EXPECT_EQ(feedback->errors[0].recoverySuggestion, "Please try recording again.");
}

TEST_F(InspectorTest, ConnectionLostIsSaidOnlyWhenTheDeviceHasReallyGone) {
    inspector->dropDownViewModel()->setCurrentDeviceIndex(1);
    auto recorder = inspector->recorder();
    // No adb here: opening the phone fails at once, a fatal error that lets the device go.
    queue->runPending();
    ASSERT_EQ(feedback->errors.size(), 1u);
    EXPECT_EQ(feedback->errors[0].localizedDescription, "Device connection error.");
    EXPECT_EQ(inspector->dropDownViewModel()->currentDevice(), nullptr);
    EXPECT_FALSE(inspector->isPreviewing());
    feedback->errors.clear();
    // Still listed: the error as it came.
    inspector->recorderDidFailWithError(*recorder, flk::capture::deviceGoneError("a hiccup"));
    queue->runPending();
    ASSERT_EQ(feedback->errors.size(), 1u);
    EXPECT_EQ(feedback->errors[0].code, flk::capture::kErrorDeviceWasDisconnected);
    EXPECT_FALSE(inspector->isPreviewing());

    phones->remove("R58");
    inspector->recorderDidFailWithError(*recorder, flk::capture::deviceGoneError("unplugged"));
    queue->runPending();
    ASSERT_EQ(feedback->errors.size(), 2u);
    EXPECT_EQ(feedback->errors[1].localizedDescription, "Device connection lost.");
}

TEST_F(InspectorTest, KeepingARecordingSelectsTheNewestAfterATenthOfASecondAndLoadsIt) {
    auto store = FLKDeviceScreenRecorder::recentlyRecordedStore();
    ASSERT_TRUE(makeClip(store->createFileURLWithName("A older"), false));
    ASSERT_TRUE(makeClip(store->createFileURLWithName("B newest"), true));
    inspector->dropDownViewModel()->setCurrentDeviceIndex(1);
    auto recorder = inspector->recorder();
    inspector->recorderDidSaveRecordingAtURL(*recorder, store->createFileURLWithName("B newest"));
    queue->advanceBy(0.099);
    EXPECT_EQ(inspector->selectedItemIndex(), FLKRecordingPanelViewModel::kNotFound);
    queue->advanceBy(0.002);
    EXPECT_EQ(inspector->selectedItemIndex(), 0u);
    const auto& items = inspector->recentlyRecordedItemViewModels();
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0]->name(), "B newest");
    EXPECT_EQ(items[0]->title(), "B newest.mp4");
    EXPECT_EQ(scene->calls, (std::vector<std::string>{"video B newest.mp4", "audio B newest.mp4"}));
    // A recording without sound takes the scene's sound away.
    scene->calls.clear();
    inspector->setSelectedItemIndex(1);
    EXPECT_EQ(scene->calls, (std::vector<std::string>{"video A older.mp4", "unload audio"}));
    // The thumbnail is made off the main thread and handed back on it.
    auto loop = std::make_shared<FLKRunLoopMainQueue>();
    FLKMainQueue::setMain(loop);
    std::shared_ptr<const FLKImage> thumbnail;
    bool loadedNow = false;
    items[1]->asyncLoadImage([&](std::shared_ptr<const FLKImage> image, bool now) {
        thumbnail = image;
        loadedNow = now;
    });
    ASSERT_TRUE(loop->runUntil([&] { return thumbnail != nullptr; }, 60));  // a safety net, not a timing
    FLKMainQueue::setMain(queue);
    EXPECT_TRUE(loadedNow);
    EXPECT_LE(thumbnail->width, FLKRecentlyRecordedItemViewModel::kThumbnailSize);
    EXPECT_EQ(thumbnail->width * 48, thumbnail->height * 64);  // the aspect kept
    // Asked again, it comes from the cache at once.
    bool cached = false;
    items[1]->asyncLoadImage([&](std::shared_ptr<const FLKImage> image, bool now) { cached = image == thumbnail && !now; });
    EXPECT_TRUE(cached);
}

TEST_F(InspectorTest, ASceneLoadOfType1ChangesNothingOtherwiseAnEmptyTrackShowsTheTutorial) {
    auto resources = flk::temporaryHome() / "resources";
    ASSERT_TRUE(makeClip(resources / "tutorial_1.mov", false));
    ::setenv("FLICKWELL_RESOURCES", resources.c_str(), 1);
    inspector->setTimelineQuery(std::make_shared<FLKTimelineQuery>(nullptr));
    FLKNotificationCenter::defaultCenter().post(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                                {{kFLKSceneLoaderLoadTypeUserInfoKey, int64_t{1}}});
    EXPECT_TRUE(scene->calls.empty());
    FLKNotificationCenter::defaultCenter().post(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                                {{kFLKSceneLoaderLoadTypeUserInfoKey, int64_t{2}}});
    EXPECT_EQ(scene->calls, (std::vector<std::string>{"video tutorial_1.mov", "unload audio"}));
    // With a preview running, the new scene gets the live sprite instead.
    scene->calls.clear();
    inspector->dropDownViewModel()->setCurrentDeviceIndex(1);
    FLKNotificationCenter::defaultCenter().post(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                                {{kFLKSceneLoaderLoadTypeUserInfoKey, int64_t{2}}});
    EXPECT_EQ(scene->calls, std::vector<std::string>{"live R58"});
    ::unsetenv("FLICKWELL_RESOURCES");
}

TEST(FLKRecordingItemMenuViewModel, TrashFollowsTheFreedesktopRulesAndRenameKeepsTheExtension) {
    auto home = flk::temporaryHome() / "trash-home";
    ::setenv("XDG_DATA_HOME", home.c_str(), 1);
    auto folder = flk::temporaryHome() / "kept recordings";
    std::filesystem::create_directories(folder);
    for (int i = 0; i < 2; ++i) {
        std::ofstream(folder / "Take 1.mp4") << "pictures " << i;
        auto trashed = FLKRecordingItemMenuViewModel::moveToTrash(folder / "Take 1.mp4");
        ASSERT_TRUE(trashed);
        EXPECT_FALSE(std::filesystem::exists(folder / "Take 1.mp4"));
        EXPECT_TRUE(std::filesystem::exists(*trashed));
    }
    // The second of the same name gets a name of its own, each with its info file.
    EXPECT_TRUE(std::filesystem::exists(home / "Trash/files/Take 1.mp4"));
    EXPECT_TRUE(std::filesystem::exists(home / "Trash/files/Take 1 2.mp4"));
    std::ifstream info(home / "Trash/info/Take 1.mp4.trashinfo");
    std::string text((std::istreambuf_iterator<char>(info)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text.rfind("[Trash Info]\nPath=", 0), 0u);
    EXPECT_NE(text.find("kept%20recordings/Take%201.mp4\nDeletionDate="), std::string::npos) << text;
    EXPECT_FALSE(FLKRecordingItemMenuViewModel::moveToTrash(folder / "missing.mp4"));

    std::ofstream(folder / "Old.mp4") << "x";
    auto sheets = std::make_shared<NotedSheets>();
    auto menu = FLKRecordingItemMenuViewModel::make(folder / "Old.mp4", sheets);
    menu->rename();
    EXPECT_EQ(sheets->shown, std::vector<std::string>{"Old"});
    menu->sheetDidSaveWithName("New");
    EXPECT_TRUE(std::filesystem::exists(folder / "New.mp4"));
    EXPECT_EQ(menu->itemURL(), folder / "New.mp4");
    EXPECT_EQ(sheets->dismissed, 1);
    ::unsetenv("XDG_DATA_HOME");
}

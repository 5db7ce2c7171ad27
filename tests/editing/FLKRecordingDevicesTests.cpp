// The recording inspector's device drop-down, record button and the errors
// it shows, over a finder fed by hand in virtual time.
#include <gtest/gtest.h>

#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKDeviceFinder.h"
#include "core/capture/FLKHandFedDeviceProvider.h"
#include "core/platform/FLKManualMainQueue.h"
#include "editing/FLKRecordButtonViewModel.h"
#include "editing/FLKRecordingDevicesDropDownViewModel.h"
#include "editing/FLKRecordingErrorTranslation.h"

namespace {

struct DropDownTest : ::testing::Test {
    std::shared_ptr<FLKManualMainQueue> queue = std::make_shared<FLKManualMainQueue>();
    std::shared_ptr<flk::test::HandFedDeviceProvider> phones = std::make_shared<flk::test::HandFedDeviceProvider>(false);
    std::shared_ptr<flk::test::HandFedDeviceProvider> monitors = std::make_shared<flk::test::HandFedDeviceProvider>(true);
    FLKDeviceFinder finder{{phones}, {monitors}, queue};

    void TearDown() override { queue->advanceBy(10); }

    std::vector<std::string> titles(const FLKRecordingDevicesDropDownViewModel& model) {
        std::vector<std::string> out;
        for (const auto& item : model.itemViewModels()) out.push_back(item.title);
        return out;
    }
};

}  // namespace

TEST_F(DropDownTest, NoDeviceComesFirstThenEverySourceAndPhonesNotYetAllowedAreGreyed) {
    phones->add("R58");
    phones->add("LOCKED", "unauthorized");
    monitors->add("hdmi");
    auto model = FLKRecordingDevicesDropDownViewModel::make("devices", &finder);
    EXPECT_EQ(titles(*model),
              (std::vector<std::string>{"No Device", "Phone R58", "Phone LOCKED (unauthorized)", "Monitor hdmi"}));
    EXPECT_FALSE(model->itemViewModels()[2].isEnabled);
    EXPECT_EQ(model->currentDevice(), nullptr);
    EXPECT_EQ(model->currentDeviceIndex(), FLKRecordingDevicesDropDownViewModel::kNotFound);
    EXPECT_TRUE(model->isEnabled());
}

TEST_F(DropDownTest, AChosenDeviceStaysChosenAcrossListingsUntilItGoes) {
    phones->add("R58");
    monitors->add("hdmi");
    auto model = FLKRecordingDevicesDropDownViewModel::make("devices", &finder);
    std::vector<std::string> changes;
    model->addPropertyObserver([&](const std::string& name) { changes.push_back(name); });
    model->setCurrentDeviceIndex(2);
    ASSERT_TRUE(model->currentDevice());
    EXPECT_EQ(model->currentDevice()->uniqueIdentifier(), "display:hdmi");
    EXPECT_NE(std::find(changes.begin(), changes.end(), "currentDevice"), changes.end());

    // A phone plugged in ahead of it moves it down the list, still chosen.
    phones->add("EMU");
    queue->advanceBy(1.0);
    EXPECT_EQ(model->currentDeviceIndex(), 3u);
    EXPECT_EQ(model->currentDevice()->uniqueIdentifier(), "display:hdmi");

    changes.clear();
    monitors->remove("hdmi");
    queue->advanceBy(1.0);
    EXPECT_EQ(model->currentDeviceIndex(), 0u);
    EXPECT_EQ(model->currentDevice(), nullptr);
    EXPECT_NE(std::find(changes.begin(), changes.end(), "currentDevice"), changes.end());
    // Out of range falls back to "No Device" too, without a change to announce.
    changes.clear();
    model->setCurrentDeviceIndex(99);
    EXPECT_EQ(model->currentDeviceIndex(), 0u);
    EXPECT_EQ(std::find(changes.begin(), changes.end(), "currentDevice"), changes.end());
}

TEST_F(DropDownTest, HasDeviceAsksTheFinderNow) {
    phones->add("R58");
    auto model = FLKRecordingDevicesDropDownViewModel::make("devices", &finder);
    auto phone = model->itemViewModels()[1].device;
    EXPECT_TRUE(model->hasDevice(*phone));
    phones->remove("R58");  // before the finder's listing catches up
    EXPECT_FALSE(model->hasDevice(*phone));
}

TEST(FLKRecordButtonViewModel, FollowsTheRecorder) {
    FLKRecordButtonViewModel button("FLKRecordButtonViewModel");
    std::vector<unsigned> states;
    button.addPropertyObserver([&](const std::string&) { states.push_back(button.recordingState()); });
    EXPECT_EQ(button.recordingState(), 0u);
    button.showPrepareToRecord();
    button.recorderIsReady();
    button.recorderDidStart();
    button.recorderDidFinish();
    button.hideRecordingButton();
    EXPECT_EQ(states, (std::vector<unsigned>{2, 1, 3, 4, 0}));
}

TEST(FLKRecordingErrorTranslation, ConnectionLostOnlyWhenTheDeviceHasReallyGone) {
    auto gone = flk::capture::deviceGoneError("The phone left.");
    auto lost = flk::recording::translateRecorderError(gone, false);
    EXPECT_EQ(lost.error.code, 5);
    EXPECT_EQ(lost.error.localizedDescription, "Device connection lost.");
    EXPECT_EQ(lost.error.failureReason, "The device has been plugged out.");
    EXPECT_EQ(lost.error.recoverySuggestion, "Please plug in your device to continue your recording session.");
    EXPECT_FALSE(lost.deselectDevice);
    // Still listed: shown as it came.
    auto listed = flk::recording::translateRecorderError(gone, true);
    EXPECT_EQ(listed.error.code, flk::capture::kErrorDeviceWasDisconnected);
    EXPECT_EQ(listed.error.failureReason, "The phone left.");

    auto fatal = flk::recording::translateRecorderError(flk::capture::captureFailedError("broken pipe"), true);
    EXPECT_EQ(fatal.error.localizedDescription, "Device connection error.");
    EXPECT_EQ(fatal.error.failureReason, "Cannot record from this device at the moment.");
    EXPECT_EQ(fatal.error.recoverySuggestion, "Please try restarting your recording device and try again.");
    EXPECT_TRUE(fatal.deselectDevice);

    auto other = FLKError::make("Elsewhere", 42, "Something else.");
    EXPECT_EQ(flk::recording::translateRecorderError(other, false).error.code, 42);
    EXPECT_EQ(flk::recording::recordingLostError().failureReason, "The rocording was lost due to an internal error.");
}

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/capture/FLKDeviceScreenRecorderDelegate.h"
#include "core/platform/FLKNotificationCenter.h"
#include "editing/FLKPropertyObservable.h"
#include "editing/FLKSaveRecordingSheetDelegate.h"

class FLKDevice;
class FLKDeviceFinder;
class FLKDeviceScreenRecorder;
class FLKLocalStore;
class FLKMainQueue;
class FLKRecentlyRecordedItemViewModel;
class FLKRecordButtonViewModel;
class FLKRecordingDevicesDropDownViewModel;
class FLKSaveRecordingSheetPresenting;
class FLKSceneModifying;
class FLKTimelineQuery;

// The recording inspector: pick a device, watch it live in the scene, record,
// name and keep the recording, load kept ones back. Observers hear
// "selectedItemIndex", "recentlyRecordedItemViewModels", "isPreviewing" and
// "isSavingRecording". Main thread only.
class FLKRecordingPanelViewModel : public FLKPropertyObservable,
                                       public FLKDeviceScreenRecorderDelegate,
                                       public FLKSaveRecordingSheetDelegate,
                                       public std::enable_shared_from_this<FLKRecordingPanelViewModel> {
public:
    static constexpr size_t kNotFound = static_cast<size_t>(INT64_MAX);
    // The render loop's pause and resume.
    static constexpr const char* kAppWillPauseNotification = "FLKAppWillWillPauseNotification";
    static constexpr const char* kAppDidUnPauseNotification = "FLKAppDidUnPauseNotification";

    struct Environment {
        FLKDeviceFinder* finder = nullptr;                       // the shared finder when null
        std::shared_ptr<FLKMainQueue> queue;                     // the main queue when null
        std::shared_ptr<FLKSaveRecordingSheetPresenting> sheets;  // none headless
    };
    static std::shared_ptr<FLKRecordingPanelViewModel> make(std::string identifier, Environment environment);
    static std::shared_ptr<FLKRecordingPanelViewModel> make(std::string identifier);
    ~FLKRecordingPanelViewModel() override;

    const std::string& identifier() const { return identifier_; }
    size_t selectedItemIndex() const { return selectedItemIndex_; }
    void setSelectedItemIndex(size_t index);
    // The kept recordings' store, watched from its first use.
    std::shared_ptr<FLKLocalStore> temporaryStore();
    const std::shared_ptr<FLKDeviceScreenRecorder>& recorder() const { return recorder_; }
    const std::shared_ptr<FLKRecordingDevicesDropDownViewModel>& dropDownViewModel();
    const std::shared_ptr<FLKRecordButtonViewModel>& recordButtonViewModel();
    const std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>>& recentlyRecordedItemViewModels();
    bool isPreviewing() const { return recorder_ != nullptr; }
    bool isSavingRecording() const { return savingRecording_; }
    bool isRecordingSelected() const { return selectedItemIndex_ != kNotFound; }

    void setSceneModifier(std::shared_ptr<FLKSceneModifying> modifier) { sceneModifier_ = std::move(modifier); }
    void setTimelineQuery(std::shared_ptr<FLKTimelineQuery> query) { timelineQuery_ = std::move(query); }

    // The record button; `onShowingApp` runs when recording starts on a monitor showing this program.
    void toggleRecord(const std::function<void()>& onShowingApp);
    void startRecording(const std::function<void()>& onShowingApp);
    void stop();
    void stopAfterDeselectingDevice();
    void stopAfterFailureWithError(const FLKError& error);
    void findDevices();
    void startPreviewWithDevice(const std::shared_ptr<FLKDevice>& device);
    void destroyRecorder();
    void cleanupRecorder();
    void showPreview();
    void showSplashVideoIfNeeded();
    void loadItemAtIndex(size_t index);
    void loadMediaFromUrl(const std::filesystem::path& url);
    void deselectDeviceIfNecessary();
    void presentSaveRecordingSheet();
    void dismissSaveRecordingSheet();
    void updateItems();

    void recorderIsReady(FLKDeviceScreenRecorder&) override;
    void recorderDidStartPreview(FLKDeviceScreenRecorder&) override;
    void recorderDidStart(FLKDeviceScreenRecorder&) override;
    void recorderDidFinish(FLKDeviceScreenRecorder&) override;
    void recorderDidSaveRecordingAtURL(FLKDeviceScreenRecorder&, const std::optional<std::filesystem::path>& url) override;
    void recorderDidFailWithError(FLKDeviceScreenRecorder&, const FLKError& error) override;
    void sheetDidSaveWithName(const std::string& name) override;
    void sheetDidCancel() override;

    // A scene was loaded with this load type.
    void sceneDidUpdate(unsigned long loadType);
    void appWillPause();
    void appDidUnPause();

private:
    FLKRecordingPanelViewModel(std::string identifier, Environment environment);
    void observe();
    void createRecentlyRecordedItemViewModels();

    std::string identifier_;
    Environment environment_;
    std::shared_ptr<FLKMainQueue> queue_;
    size_t selectedItemIndex_ = kNotFound;
    std::shared_ptr<FLKLocalStore> temporaryStore_;
    std::shared_ptr<FLKDeviceScreenRecorder> recorder_;
    std::shared_ptr<FLKRecordingDevicesDropDownViewModel> dropDownViewModel_;
    std::shared_ptr<FLKRecordButtonViewModel> recordButtonViewModel_;
    std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>> items_;
    bool itemsMade_ = false;
    bool savingRecording_ = false;
    std::shared_ptr<FLKSceneModifying> sceneModifier_;
    std::shared_ptr<FLKTimelineQuery> timelineQuery_;
    std::vector<FLKNotificationCenter::Token> notificationTokens_;
};

#include "editing/FLKRecordingPanelViewModel.h"

#include <algorithm>

#include "core/capture/FLKDevice.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/media/FLKAsset.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneModifying.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKLocalStore.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKResources.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKTimelineQuery.h"
#include "editing/FLKRecentlyRecordedItemViewModel.h"
#include "editing/FLKRecordButtonViewModel.h"
#include "editing/FLKRecordingDevicesDropDownViewModel.h"
#include "editing/FLKRecordingErrorTranslation.h"
#include "editing/FLKSaveRecordingSheetPresenting.h"

namespace {
// After a recording is kept, the list shows it first; it is selected once the list has it.
constexpr double kSelectKeptRecordingDelay = 0.1;
}  // namespace

std::shared_ptr<FLKRecordingPanelViewModel> FLKRecordingPanelViewModel::make(std::string identifier,
                                                                                     Environment environment) {
    std::shared_ptr<FLKRecordingPanelViewModel> model(
        new FLKRecordingPanelViewModel(std::move(identifier), std::move(environment)));
    model->findDevices();
    model->observe();
    return model;
}

std::shared_ptr<FLKRecordingPanelViewModel> FLKRecordingPanelViewModel::make(std::string identifier) {
    return make(std::move(identifier), Environment{});
}

FLKRecordingPanelViewModel::FLKRecordingPanelViewModel(std::string identifier, Environment environment)
    : identifier_(std::move(identifier)),
      environment_(std::move(environment)),
      queue_(environment_.queue ? environment_.queue : FLKMainQueue::main()) {}

FLKRecordingPanelViewModel::~FLKRecordingPanelViewModel() {
    for (auto token : notificationTokens_) FLKNotificationCenter::defaultCenter().removeObserver(token);
    if (temporaryStore_) temporaryStore_->stopWatchingForUpdates();
    if (recorder_) recorder_->finish();
}

void FLKRecordingPanelViewModel::observe() {
    std::weak_ptr<FLKRecordingPanelViewModel> weak = weak_from_this();
    auto& center = FLKNotificationCenter::defaultCenter();
    notificationTokens_.push_back(
        center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr, [weak](const FLKNotification& note) {
            auto self = weak.lock();
            if (!self) return;
            unsigned long type = 0;
            auto it = note.userInfo.find(kFLKSceneLoaderLoadTypeUserInfoKey);
            if (it != note.userInfo.end() && std::holds_alternative<int64_t>(it->second)) {
                type = static_cast<unsigned long>(std::get<int64_t>(it->second));
            }
            self->sceneDidUpdate(type);
        }));
    notificationTokens_.push_back(center.addObserver(kAppWillPauseNotification, nullptr, [weak](const FLKNotification&) {
        if (auto self = weak.lock()) self->appWillPause();
    }));
    notificationTokens_.push_back(center.addObserver(kAppDidUnPauseNotification, nullptr, [weak](const FLKNotification&) {
        if (auto self = weak.lock()) self->appDidUnPause();
    }));
}

std::shared_ptr<FLKLocalStore> FLKRecordingPanelViewModel::temporaryStore() {
    if (!temporaryStore_) {
        temporaryStore_ = FLKDeviceScreenRecorder::recentlyRecordedStore();
        std::weak_ptr<FLKRecordingPanelViewModel> weak = weak_from_this();
        temporaryStore_->startWatchingForUpdates([weak] {
            if (auto self = weak.lock()) self->updateItems();
        });
    }
    return temporaryStore_;
}

const std::shared_ptr<FLKRecordingDevicesDropDownViewModel>& FLKRecordingPanelViewModel::dropDownViewModel() {
    if (!dropDownViewModel_) {
        dropDownViewModel_ = FLKRecordingDevicesDropDownViewModel::make(identifier_ + "_devices", environment_.finder);
    }
    return dropDownViewModel_;
}

const std::shared_ptr<FLKRecordButtonViewModel>& FLKRecordingPanelViewModel::recordButtonViewModel() {
    if (!recordButtonViewModel_) recordButtonViewModel_ = std::make_shared<FLKRecordButtonViewModel>("FLKRecordButtonViewModel");
    return recordButtonViewModel_;
}

const std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>>&
FLKRecordingPanelViewModel::recentlyRecordedItemViewModels() {
    if (!itemsMade_) createRecentlyRecordedItemViewModels();
    return items_;
}

void FLKRecordingPanelViewModel::createRecentlyRecordedItemViewModels() {
    auto urls = temporaryStore()->fileURLs();
    std::reverse(urls.begin(), urls.end());
    std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>> items;
    for (const auto& url : urls) {
        // Every item gets the same identifier, numbered 0: views tell them apart by position.
        items.push_back(
            std::make_shared<FLKRecentlyRecordedItemViewModel>(identifier_ + "_item_0l", url, environment_.sheets));
    }
    items_ = std::move(items);
    itemsMade_ = true;
}

void FLKRecordingPanelViewModel::updateItems() {
    createRecentlyRecordedItemViewModels();
    didChangeProperty("recentlyRecordedItemViewModels");
}

void FLKRecordingPanelViewModel::setSelectedItemIndex(size_t index) {
    selectedItemIndex_ = index;
    didChangeProperty("selectedItemIndex");
    if (index == kNotFound) return;
    loadItemAtIndex(index);
    deselectDeviceIfNecessary();
}

void FLKRecordingPanelViewModel::loadItemAtIndex(size_t index) {
    const auto& items = recentlyRecordedItemViewModels();
    if (index < items.size()) loadMediaFromUrl(items[index]->itemURL());
}

void FLKRecordingPanelViewModel::loadMediaFromUrl(const std::filesystem::path& url) {
    deselectDeviceIfNecessary();
    if (!sceneModifier_) return;
    auto asset = FLKAsset::assetWithPath(url.string());
    if (asset && asset->hasVideo()) sceneModifier_->loadVideoWithURL(url);
    if (asset && asset->hasAudio()) {
        sceneModifier_->loadAudioWithURL(url);
    } else {
        sceneModifier_->unloadAudio();
    }
}

void FLKRecordingPanelViewModel::findDevices() {
    std::weak_ptr<FLKRecordingPanelViewModel> weak = weak_from_this();
    auto dropDown = dropDownViewModel();
    dropDown->addPropertyObserver([weak](const std::string& property) {
        auto self = weak.lock();
        if (!self || property != "currentDevice") return;
        if (const auto& device = self->dropDownViewModel_->currentDevice()) self->startPreviewWithDevice(device);
        else self->stopAfterDeselectingDevice();
    });
}

void FLKRecordingPanelViewModel::startPreviewWithDevice(const std::shared_ptr<FLKDevice>& device) {
    recordButtonViewModel()->showPrepareToRecord();
    destroyRecorder();
    // While a recording is being named the recorder stays: it still has to keep it.
    if (recorder_) return;
    recorder_ = FLKDeviceScreenRecorder::make(device, weak_from_this(), temporaryStore(), queue_);
    didChangeProperty("isPreviewing");
    recorder_->preview();
}

void FLKRecordingPanelViewModel::destroyRecorder() {
    if (savingRecording_ || !recorder_) return;
    recorder_->setOutput(nullptr);
    recorder_->finish();
    recorder_.reset();
    didChangeProperty("isPreviewing");
}

void FLKRecordingPanelViewModel::cleanupRecorder() {
    if (recorder_) recorder_->cleanup();
}

void FLKRecordingPanelViewModel::toggleRecord(const std::function<void()>& onShowingApp) {
    if (!recorder_) {
        if (const auto& device = dropDownViewModel()->currentDevice()) startPreviewWithDevice(device);
        return;
    }
    if (!recorder_->isRecording() && recorder_->hasPreview()) {
        startRecording(onShowingApp);
    } else if (recorder_->isRecording()) {
        stop();
    } else {
        flk::log("%s line %d $ FLKRecordingPanelViewModel: Waiting for something to happen", __func__, __LINE__);
    }
}

void FLKRecordingPanelViewModel::startRecording(const std::function<void()>& onShowingApp) {
    recorder_->record();
    const auto& device = dropDownViewModel()->currentDevice();
    if (device && device->isShowingApp() && onShowingApp) onShowingApp();
    dropDownViewModel()->setEnabled(false);
}

void FLKRecordingPanelViewModel::stop() {
    if (recorder_) recorder_->finish();
    dropDownViewModel()->setEnabled(true);
}

void FLKRecordingPanelViewModel::stopAfterDeselectingDevice() {
    cleanupRecorder();
    destroyRecorder();
    recordButtonViewModel()->hideRecordingButton();
    dropDownViewModel()->setEnabled(true);
}

void FLKRecordingPanelViewModel::stopAfterFailureWithError(const FLKError& error) {
    stopAfterDeselectingDevice();
    queue_->post([error] { FLKUserFeedback::shared().presentError(error); });
}

void FLKRecordingPanelViewModel::showPreview() {
    if (recorder_) recorderDidStartPreview(*recorder_);
}

void FLKRecordingPanelViewModel::showSplashVideoIfNeeded() {
    if (!timelineQuery_ || timelineQuery_->numClipsForTrackAtIndex(0) != 0) return;
    if (auto tutorial = FLKResources::URLForResource("tutorial_1", kFLKFileExtensionMOV)) loadMediaFromUrl(*tutorial);
}

void FLKRecordingPanelViewModel::deselectDeviceIfNecessary() { dropDownViewModel()->deselectDevice(); }

void FLKRecordingPanelViewModel::presentSaveRecordingSheet() {
    savingRecording_ = true;
    didChangeProperty("isSavingRecording");
    if (environment_.sheets) environment_.sheets->presentSaveRecordingSheet(weak_from_this(), "");
}

void FLKRecordingPanelViewModel::dismissSaveRecordingSheet() {
    if (environment_.sheets) environment_.sheets->dismissSaveRecordingSheet();
    savingRecording_ = false;
    didChangeProperty("isSavingRecording");
}

void FLKRecordingPanelViewModel::recorderIsReady(FLKDeviceScreenRecorder&) {
    recordButtonViewModel()->recorderIsReady();
}

void FLKRecordingPanelViewModel::recorderDidStartPreview(FLKDeviceScreenRecorder& recorder) {
    const auto& device = dropDownViewModel()->currentDevice();
    if (!sceneModifier_ || !device) return;
    recorder.setOutput(sceneModifier_->loadRealtimeSpriteForDevice(*device));
}

void FLKRecordingPanelViewModel::recorderDidStart(FLKDeviceScreenRecorder&) {
    recordButtonViewModel()->recorderDidStart();
}

void FLKRecordingPanelViewModel::recorderDidFinish(FLKDeviceScreenRecorder&) {
    recordButtonViewModel()->recorderDidFinish();
    presentSaveRecordingSheet();
}

void FLKRecordingPanelViewModel::recorderDidSaveRecordingAtURL(FLKDeviceScreenRecorder&,
                                                                   const std::optional<std::filesystem::path>&) {
    destroyRecorder();
    std::weak_ptr<FLKRecordingPanelViewModel> weak = weak_from_this();
    queue_->postAfter(kSelectKeptRecordingDelay, [weak] {
        if (auto self = weak.lock()) {
            self->updateItems();
            self->setSelectedItemIndex(0);
        }
    });
}

void FLKRecordingPanelViewModel::recorderDidFailWithError(FLKDeviceScreenRecorder& recorder, const FLKError& error) {
    bool listed = recorder.device() && dropDownViewModel()->hasDevice(*recorder.device());
    auto translated = flk::recording::translateRecorderError(error, listed);
    if (translated.deselectDevice) deselectDeviceIfNecessary();
    stopAfterFailureWithError(translated.error);
}

void FLKRecordingPanelViewModel::sheetDidSaveWithName(const std::string& name) {
    if (!recorder_) {
        stopAfterFailureWithError(flk::recording::recordingLostError());
        return;
    }
    auto recorder = recorder_;
    recorder->saveRecordingWithName(name);
    dismissSaveRecordingSheet();
    deselectDeviceIfNecessary();
}

void FLKRecordingPanelViewModel::sheetDidCancel() {
    dismissSaveRecordingSheet();
    deselectDeviceIfNecessary();
}

void FLKRecordingPanelViewModel::sceneDidUpdate(unsigned long loadType) {
    if (loadType == 1) return;
    if (isPreviewing()) showPreview();
    else showSplashVideoIfNeeded();
}

void FLKRecordingPanelViewModel::appWillPause() {
    if (recorder_) recorder_->setIsPreviewPaused(true);
}

void FLKRecordingPanelViewModel::appDidUnPause() {
    if (recorder_) recorder_->setIsPreviewPaused(false);
}

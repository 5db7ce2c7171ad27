#pragma once

#include <QWidget>

#include <memory>

#include "core/platform/FLKNotificationCenter.h"
#include "editing/FLKPropertyObservable.h"

class FLKCurrentSceneModifier;
class FLKDeviceFinder;
class FLKMainWindow;
class FLKRecentRecordingsList;
class FLKRecordingPanelViewModel;
class FLKSaveRecordingSheetPresenter;
class QComboBox;
class QLabel;
class QPushButton;

// The record page: the sources to record from (phones over adb, capture
// cards, monitors), the record button, and the recordings kept so far.
// Choosing a source shows it live on the canvas's screen; a finished
// recording is named on a sheet, kept, and loaded as the clip. Binds to the
// recording view models only. Main thread only.
class FLKRecordPage : public QWidget {
    Q_OBJECT

public:
    explicit FLKRecordPage(FLKMainWindow& window, QWidget* parent = nullptr);
    ~FLKRecordPage() override;

    QComboBox* deviceBox() const { return devices_; }
    QPushButton* recordButton() const { return record_; }
    QLabel* statusLabel() const { return status_; }
    FLKRecentRecordingsList* recordingsList() const { return recordings_; }
    FLKRecordingPanelViewModel& viewModel() const { return *model_; }
    FLKDeviceFinder& deviceFinder() const { return *finder_; }
    FLKSaveRecordingSheetPresenter& sheets() const { return *sheets_; }

    // The source of that row of the drop-down, as a user picking it; false
    // for a source that cannot be recorded (a phone not yet allowed, offline).
    bool chooseDeviceAtRow(int row);

private:
    void reloadDevices();
    void showCurrentDevice();
    void showRecordingState();
    void previewDidChange();

    FLKMainWindow& window_;
    // The finder's watchers outlive everything that observes them.
    std::unique_ptr<FLKDeviceFinder> finder_;
    // Registered before the view model's own: it reads the new timeline when it hears of the scene.
    FLKObservation sceneObservation_;
    std::shared_ptr<FLKSaveRecordingSheetPresenter> sheets_;
    std::shared_ptr<FLKCurrentSceneModifier> sceneModifier_;
    std::shared_ptr<FLKRecordingPanelViewModel> model_;
    QComboBox* devices_ = nullptr;
    QPushButton* record_ = nullptr;
    QLabel* status_ = nullptr;
    FLKRecentRecordingsList* recordings_ = nullptr;
    FLKPropertyObservable::ObserverToken modelToken_ = 0;
    FLKPropertyObservable::ObserverToken dropDownToken_ = 0;
    FLKPropertyObservable::ObserverToken buttonToken_ = 0;
};

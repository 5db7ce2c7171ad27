#include "app/sidepanel/FLKRecordPage.h"

#include <QComboBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include "app/bridge/FLKCurrentSceneModifier.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKMainWindow.h"
#include "app/sidepanel/FLKRecentRecordingsList.h"
#include "app/sidepanel/FLKSaveRecordingSheetPresenter.h"
#include "core/capture/FLKDeviceFinder.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKMainQueue.h"
#include "core/timeline/FLKTimelineQuery.h"
#include "editing/FLKRecordButtonViewModel.h"
#include "editing/FLKRecordingDevicesDropDownViewModel.h"
#include "editing/FLKRecordingPanelViewModel.h"

namespace {
// A red dot to record, a square to stop.
QIcon recordIcon(bool stop) {
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(214, 48, 49));
    if (stop) painter.drawRoundedRect(QRectF(3, 3, 10, 10), 2, 2);
    else painter.drawEllipse(QRectF(2, 2, 12, 12));
    return QIcon(pixmap);
}

QString deviceName(const FLKRecordingDevicesDropDownViewModel& dropDown) {
    const size_t index = dropDown.currentDeviceIndex();
    const auto& items = dropDown.itemViewModels();
    return index < items.size() ? QString::fromStdString(items[index].title) : QString();
}
}  // namespace

FLKRecordPage::FLKRecordPage(FLKMainWindow& window, QWidget* parent)
    : QWidget(parent),
      window_(window),
      finder_(FLKDeviceFinder::makeWithSystemSources(FLKMainQueue::main())),
      sheets_(std::make_shared<FLKSaveRecordingSheetPresenter>(this)),
      sceneModifier_(std::make_shared<FLKCurrentSceneModifier>([&window] {
          window.documentController()->noteChange();
          window.sceneView()->redraw();
      })) {
    auto* title = new QLabel("Source", this);
    devices_ = new QComboBox(this);
    devices_->setObjectName("recordingDevices");
    devices_->setToolTip("A phone over USB (adb), a capture card or webcam, or one of this computer's monitors.");
    devices_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    devices_->setMinimumContentsLength(16);
    record_ = new QPushButton(this);
    record_->setObjectName("recordButton");
    record_->setMinimumHeight(32);
    status_ = new QLabel(this);
    status_->setObjectName("recordingStatus");
    status_->setWordWrap(true);
    status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* kept = new QLabel("Recordings", this);
    recordings_ = new FLKRecentRecordingsList(this);
    auto* hint = new QLabel("Double-click a recording to put it on the screen.", this);
    hint->setWordWrap(true);
    hint->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    hint->setStyleSheet("color: palette(placeholder-text);");

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(devices_);
    layout->addWidget(record_);
    layout->addWidget(status_);
    layout->addSpacing(8);
    layout->addWidget(kept);
    layout->addWidget(recordings_, 1);
    layout->addWidget(hint);

    auto timelineQuery = [] {
        return std::make_shared<FLKTimelineQuery>(FLKSceneLoader::defaultSceneLoader().currentTimeline());
    };
    auto& center = FLKNotificationCenter::defaultCenter();
    sceneObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                   [this, timelineQuery](const FLKNotification&) {
                                       if (model_) model_->setTimelineQuery(timelineQuery());
                                   }));
    model_ = FLKRecordingPanelViewModel::make("FLKRecordingPanelViewModel", {finder_.get(), nullptr, sheets_});
    model_->setSceneModifier(sceneModifier_);
    model_->setTimelineQuery(timelineQuery());

    modelToken_ = model_->addPropertyObserver([this](const std::string& property) {
        if (property == "recentlyRecordedItemViewModels") recordings_->setItems(model_->recentlyRecordedItemViewModels());
        else if (property == "isPreviewing") previewDidChange();
        else if (property == "selectedItemIndex" && model_->isRecordingSelected()) {
            recordings_->setCurrentRow(static_cast<int>(model_->selectedItemIndex()));
        }
    });
    dropDownToken_ = model_->dropDownViewModel()->addPropertyObserver([this](const std::string& property) {
        if (property == "itemViewModels") reloadDevices();
        else if (property == "currentDeviceIndex") showCurrentDevice();
        else if (property == "enabled") devices_->setEnabled(model_->dropDownViewModel()->isEnabled());
    });
    buttonToken_ = model_->recordButtonViewModel()->addPropertyObserver([this](const std::string& property) {
        if (property == "recordingState") showRecordingState();
    });

    connect(devices_, &QComboBox::activated, this, &FLKRecordPage::chooseDeviceAtRow);
    connect(record_, &QPushButton::clicked, this, [this] {
        model_->toggleRecord([this] {
            status_->setText("Recording the screen this window is on: switch to the app to record.");
        });
    });
    connect(recordings_, &FLKRecentRecordingsList::loadRequested, this, [this](int row) {
        if (row >= 0) model_->setSelectedItemIndex(static_cast<size_t>(row));
    });

    reloadDevices();
    showRecordingState();
    recordings_->setItems(model_->recentlyRecordedItemViewModels());
}

FLKRecordPage::~FLKRecordPage() {
    model_->removePropertyObserver(modelToken_);
    model_->dropDownViewModel()->removePropertyObserver(dropDownToken_);
    model_->recordButtonViewModel()->removePropertyObserver(buttonToken_);
    // Before the finder and the sheets go: a running recorder stops with its view model.
    model_.reset();
}

void FLKRecordPage::reloadDevices() {
    const auto& items = model_->dropDownViewModel()->itemViewModels();
    QSignalBlocker blocker(devices_);
    devices_->clear();
    auto* rows = qobject_cast<QStandardItemModel*>(devices_->model());
    for (const auto& item : items) {
        devices_->addItem(QString::fromStdString(item.title));
        // Shown, so the user sees the phone is there, but not chosen.
        if (!item.isEnabled && rows) {
            QStandardItem* row = rows->item(devices_->count() - 1);
            row->setFlags(row->flags() & ~Qt::ItemIsEnabled);
            row->setToolTip("Allow USB debugging on the phone, then it can be chosen.");
        }
    }
    showCurrentDevice();
}

void FLKRecordPage::showCurrentDevice() {
    const size_t index = model_->dropDownViewModel()->currentDeviceIndex();
    QSignalBlocker blocker(devices_);
    devices_->setCurrentIndex(index < static_cast<size_t>(devices_->count()) ? static_cast<int>(index) : 0);
}

bool FLKRecordPage::chooseDeviceAtRow(int row) {
    auto dropDown = model_->dropDownViewModel();
    const auto& items = dropDown->itemViewModels();
    if (row < 0 || static_cast<size_t>(row) >= items.size() || !items[static_cast<size_t>(row)].isEnabled) {
        showCurrentDevice();
        return false;
    }
    dropDown->setCurrentDeviceIndex(static_cast<size_t>(row));
    return true;
}

void FLKRecordPage::showRecordingState() {
    const auto state = model_->recordButtonViewModel()->recordingState();
    const QString device = deviceName(*model_->dropDownViewModel());
    record_->setVisible(state != FLKRecordButtonViewModel::kHidden);
    switch (state) {
        case FLKRecordButtonViewModel::kHidden:
            status_->setText("Choose a source to see its screen on the canvas.");
            break;
        case FLKRecordButtonViewModel::kReady:
            record_->setText("Record");
            record_->setIcon(recordIcon(false));
            record_->setEnabled(true);
            status_->setText(QStringLiteral("%1 is live on the canvas.").arg(device));
            break;
        case FLKRecordButtonViewModel::kPreparing:
            record_->setText("Connecting...");
            record_->setIcon(QIcon());
            record_->setEnabled(false);
            status_->setText(QStringLiteral("Waiting for the first picture from %1.").arg(device));
            break;
        case FLKRecordButtonViewModel::kRecording:
            record_->setText("Stop");
            record_->setIcon(recordIcon(true));
            record_->setEnabled(true);
            status_->setText(QStringLiteral("Recording %1.").arg(device));
            break;
        case FLKRecordButtonViewModel::kFinished:
            record_->setText("Finishing...");
            record_->setIcon(QIcon());
            record_->setEnabled(false);
            status_->setText("Name the recording to keep it.");
            break;
    }
}

void FLKRecordPage::previewDidChange() {
    // A stopped preview gives the screen back to the timeline's clip.
    if (!model_->isPreviewing()) sceneModifier_->unloadRealtimeSprite();
    window_.sceneView()->redraw();
}

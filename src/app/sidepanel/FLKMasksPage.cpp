#include "app/sidepanel/FLKMasksPage.h"

#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QImage>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKMainWindow.h"
#include "core/model/FLKFile.h"
#include "core/model/FLKMasksManager.h"
#include "core/model/FLKPackagePaths.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKVideoContainer.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKScreenMaskViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"

namespace {
const QSize kPreviewSize(88, 88);
constexpr const char* kErrorDomain = "FLKMasksPageErrorDomain";

// The mask's shape in white over a dark square, which shows both what it
// lets through and what it hides.
QIcon maskPreview(const std::filesystem::path& url) {
    QImage mask(QString::fromStdString(url.string()));
    QPixmap cell(kPreviewSize);
    cell.fill(QColor(60, 60, 64));
    if (mask.isNull()) return QIcon(cell);
    const QImage scaled = mask.scaled(kPreviewSize - QSize(8, 8), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&cell);
    painter.drawImage((cell.width() - scaled.width()) / 2, (cell.height() - scaled.height()) / 2, scaled);
    return QIcon(cell);
}

bool isUserMask(const std::filesystem::path& url) {
    return flk::isLexicallyInside(url, FLKMasksManager::defaultManager().localStore()->directoryURL());
}
}  // namespace

FLKMasksPage::FLKMasksPage(FLKMainWindow& window, QWidget* parent) : QWidget(parent), window_(window) {
    list_ = new QListWidget;
    list_->setObjectName("maskList");
    list_->setViewMode(QListView::IconMode);
    list_->setIconSize(kPreviewSize);
    list_->setMovement(QListView::Static);
    list_->setResizeMode(QListView::Adjust);
    list_->setWordWrap(true);
    list_->setGridSize(kPreviewSize + QSize(28, 40));
    applyButton_ = new QPushButton("Apply to Screen");
    applyButton_->setToolTip("Show the selected screen's video through this mask.");
    clearButton_ = new QPushButton("No Mask");
    importButton_ = new QPushButton("Import...");
    importButton_->setToolTip("Add a PNG picture whose opaque part shows the video.");
    removeButton_ = new QPushButton("Remove");

    auto* buttons = new QGridLayout;
    buttons->addWidget(applyButton_, 0, 0);
    buttons->addWidget(clearButton_, 0, 1);
    buttons->addWidget(importButton_, 1, 0);
    buttons->addWidget(removeButton_, 1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list_, 1);
    layout->addLayout(buttons);

    connect(list_, &QListWidget::itemActivated, this, [this] { applyCurrentMask(); });
    connect(list_, &QListWidget::currentRowChanged, this, &FLKMasksPage::refreshButtons);
    connect(applyButton_, &QPushButton::clicked, this, &FLKMasksPage::applyCurrentMask);
    connect(clearButton_, &QPushButton::clicked, this, &FLKMasksPage::clearMask);
    connect(importButton_, &QPushButton::clicked, this, &FLKMasksPage::importWithDialog);
    connect(removeButton_, &QPushButton::clicked, this, &FLKMasksPage::removeCurrentWithDialog);

    auto& center = FLKNotificationCenter::defaultCenter();
    // The manager may post from any thread; the list is rebuilt on this one.
    masksObservation_ = FLKObservation(
        center, center.addObserver(kFLKMasksManagerMasksDidUpdateNotification, nullptr, [this](const FLKNotification&) {
            QMetaObject::invokeMethod(this, [this] { reload(); }, Qt::QueuedConnection);
        }));
    reload();
}

void FLKMasksPage::reload() {
    const std::filesystem::path current = maskAtRow(list_->currentRow());
    masks_ = FLKMasksManager::defaultManager().masks();
    list_->clear();
    for (const auto& url : masks_) {
        auto* item = new QListWidgetItem(maskPreview(url), QString::fromStdString(url.stem().string()), list_);
        item->setToolTip(QString::fromStdString(url.string()));
    }
    const auto kept = std::find(masks_.begin(), masks_.end(), current);
    list_->setCurrentRow(kept != masks_.end() ? static_cast<int>(kept - masks_.begin()) : (masks_.empty() ? -1 : 0));
    refreshButtons();
}

std::filesystem::path FLKMasksPage::maskAtRow(int row) const {
    if (row < 0 || static_cast<size_t>(row) >= masks_.size()) return {};
    return masks_[static_cast<size_t>(row)];
}

void FLKMasksPage::refreshButtons() {
    const auto current = maskAtRow(list_->currentRow());
    applyButton_->setEnabled(!current.empty());
    const bool own = !current.empty() && isUserMask(current);
    removeButton_->setEnabled(own);
    removeButton_->setToolTip(own ? QString() : QStringLiteral("Built-in masks stay as they are."));
}

std::shared_ptr<FLKVideoContainer> FLKMasksPage::targetScreen() const {
    if (FLKCanvasViewModels* models = window_.canvasViewModels(); models && models->selecting()) {
        for (const auto& object : models->selecting()->selectedObjects()) {
            if (auto screen = std::dynamic_pointer_cast<FLKVideoContainer>(object)) return screen;
        }
    }
    auto scene = FLKSceneLoader::defaultSceneLoader().currentScene();
    if (!scene) return nullptr;
    const auto screens = scene->childrenWithClass<FLKVideoContainer>();
    return screens.size() == 1 ? screens.front() : nullptr;
}

bool FLKMasksPage::applyCurrentMask() {
    const auto mask = maskAtRow(list_->currentRow());
    if (mask.empty()) return false;
    FLKError error;
    auto screen = targetScreen();
    auto file = FLKFile::currentFile();
    if (!screen) {
        error = FLKError::make(kErrorDomain, 1, "The mask \"" + mask.stem().string() + "\" was not applied.",
                               "Select a screen on the canvas first.");
    } else if (FLKScreenMaskViewModel(screen, file ? file->media() : nullptr).applyMask(mask, &error)) {
        window_.sceneView()->redraw();
        return true;
    }
    FLKUserFeedback::shared().presentError(error);
    return false;
}

void FLKMasksPage::clearMask() {
    auto screen = targetScreen();
    if (!screen || !screen->videoMaskImageURL()) return;
    FLKScreenMaskViewModel(screen, nullptr).removeMask();
    window_.sceneView()->redraw();
}

void FLKMasksPage::importWithDialog() {
    const QString path = QFileDialog::getOpenFileName(this, "Import Mask", QDir::homePath(), "PNG pictures (*.png)");
    if (path.isEmpty()) return;
    FLKError error;
    if (!FLKMasksManager::defaultManager().addMaskFromURL(path.toStdString(), &error)) {
        FLKUserFeedback::shared().presentError(error);
    }
}

void FLKMasksPage::removeCurrentWithDialog() {
    const auto mask = maskAtRow(list_->currentRow());
    if (mask.empty() || !isUserMask(mask)) return;
    const auto answer = QMessageBox::question(
        this, "Remove Mask",
        QStringLiteral("Remove the mask \"%1\" from your library? Screens that use it keep their copy.")
            .arg(QString::fromStdString(mask.stem().string())),
        QMessageBox::Yes | QMessageBox::Cancel, QMessageBox::Cancel);
    if (answer != QMessageBox::Yes) return;
    FLKError error;
    if (!FLKMasksManager::defaultManager().removeMask(mask, &error)) FLKUserFeedback::shared().presentError(error);
}

#include "app/sidepanel/FLKBackgroundPage.h"

#include <QColorDialog>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainWindow.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneModifier.h"
#include "core/scene/FLKTexturedSprite.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKBackgroundViewModel.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKSelectionWidgetViewModel.h"

namespace {
const std::array<const char*, FLKBackgroundPage::kCornerCount> kCornerNames = {"Top left", "Top right",
                                                                                    "Bottom left", "Bottom right"};

QColor toQColor(const FLKColor& color) { return QColor::fromRgbF(color.red, color.green, color.blue, color.alpha); }

FLKColor toFLKColor(const QColor& color) {
    return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

QIcon swatch(const QColor& color) {
    QPixmap pixmap(40, 24);
    pixmap.fill(color);
    QPainter painter(&pixmap);
    painter.setPen(QColor(0, 0, 0, 90));
    painter.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
    return QIcon(pixmap);
}

FLKSceneModifier currentModifier() {
    return FLKSceneModifier(FLKSceneLoader::defaultSceneLoader().currentScene(), nullptr, nullptr);
}

// The picture background, set by a drop or from this page; null when there is none.
std::shared_ptr<FLKTexturedSprite> backgroundPicture() {
    auto scene = FLKSceneLoader::defaultSceneLoader().currentScene();
    if (!scene) return nullptr;
    for (const auto& node : scene->childrenWithClass(typeid(FLKTexturedSprite))) {
        if (node->name() && *node->name() == FLKSceneModifier::kBackgroundSpriteName) {
            return std::dynamic_pointer_cast<FLKTexturedSprite>(node);
        }
    }
    return nullptr;
}
}  // namespace

FLKBackgroundPage::FLKBackgroundPage(FLKMainWindow& window, QWidget* parent)
    : QWidget(parent), window_(window) {
    auto* corners = new QGridLayout;
    for (int corner = 0; corner < kCornerCount; ++corner) {
        auto* button = new QPushButton(kCornerNames[static_cast<size_t>(corner)]);
        button->setObjectName(QStringLiteral("cornerColor%1").arg(corner));
        button->setIconSize(QSize(40, 24));
        connect(button, &QPushButton::clicked, this, [this, corner] { pickCornerColor(corner); });
        corners->addWidget(button, corner / 2, corner % 2);
        cornerButtons_[static_cast<size_t>(corner)] = button;
    }
    noGradientLabel_ = new QLabel("This scene has no gradient background.");
    noGradientLabel_->setWordWrap(true);
    imageButton_ = new QPushButton("Choose Picture...");
    removeImageButton_ = new QPushButton("Remove Picture");
    connect(imageButton_, &QPushButton::clicked, this, &FLKBackgroundPage::chooseImageWithDialog);
    connect(removeImageButton_, &QPushButton::clicked, this, &FLKBackgroundPage::removeImage);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel("<b>Gradient colours</b>"));
    layout->addLayout(corners);
    layout->addWidget(noGradientLabel_);
    layout->addSpacing(12);
    layout->addWidget(new QLabel("<b>Picture</b>"));
    auto* pictureHint = new QLabel("A picture covers the gradient.");
    pictureHint->setWordWrap(true);
    layout->addWidget(pictureHint);
    auto* pictureButtons = new QHBoxLayout;
    pictureButtons->addWidget(imageButton_);
    pictureButtons->addWidget(removeImageButton_);
    layout->addLayout(pictureButtons);
    layout->addStretch(1);

    auto& center = FLKNotificationCenter::defaultCenter();
    loadObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr, [this](const FLKNotification&) {
            QMetaObject::invokeMethod(this, [this] { refresh(); }, Qt::QueuedConnection);
        }));
    // Undo and redo change the colours behind this page's back.
    historyObservation_ = FLKObservation(
        center, center.addObserver(FLKActionPipelineDidUpdateNotification, nullptr, [this](const FLKNotification&) {
            QMetaObject::invokeMethod(this, [this] { refresh(); }, Qt::QueuedConnection);
        }));
    refresh();
}

void FLKBackgroundPage::refresh() {
    const auto colors = FLKBackgroundViewModel(currentModifier().gradientSprite()).colors();
    for (int corner = 0; corner < kCornerCount; ++corner) {
        QPushButton* button = cornerButtons_[static_cast<size_t>(corner)];
        const bool has = static_cast<size_t>(corner) < colors.size();
        button->setEnabled(has);
        button->setIcon(has ? swatch(toQColor(colors[static_cast<size_t>(corner)])) : QIcon());
    }
    noGradientLabel_->setVisible(colors.empty());
    removeImageButton_->setEnabled(backgroundPicture() != nullptr);
}

void FLKBackgroundPage::pickCornerColor(int corner) {
    // The scene's gradient at the click: a scene loaded while the dialog runs leaves this pick alone.
    const auto model = std::make_shared<FLKBackgroundViewModel>(currentModifier().gradientSprite());
    if (!model->beginPick(static_cast<size_t>(corner))) return;
    QColorDialog dialog(toQColor(model->colors()[static_cast<size_t>(corner)]), this);
    dialog.setWindowTitle(QStringLiteral("%1 Colour").arg(kCornerNames[static_cast<size_t>(corner)]));
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    connect(&dialog, &QColorDialog::currentColorChanged, this, [this, model](const QColor& color) {
        if (!color.isValid()) return;
        model->previewColor(toFLKColor(color));
        window_.sceneView()->redraw();
    });
    if (dialog.exec() == QDialog::Accepted && dialog.selectedColor().isValid()) {
        model->previewColor(toFLKColor(dialog.selectedColor()));
        model->commitPick();
    } else {
        model->cancelPick();
    }
    window_.sceneView()->redraw();
    refresh();
}

void FLKBackgroundPage::chooseImageWithDialog() {
    const QString path = QFileDialog::getOpenFileName(
        this, "Choose Picture", QDir::homePath(),
        "Pictures (*.png *.jpg *.jpeg *.gif *.bmp *.tif *.tiff *.webp *.heic);;All files (*)");
    // Taken as a picture dropped on the canvas is.
    if (!path.isEmpty()) window_.fileHandler().handleOpenURL(path.toStdString());
    refresh();
}

void FLKBackgroundPage::removeImage() {
    auto picture = backgroundPicture();
    if (!picture) return;
    // A dropped picture is selected when it comes; a selection of what is gone would swallow clicks.
    if (FLKCanvasViewModels* models = window_.canvasViewModels(); models && models->selecting()) {
        const auto& selected = models->selecting()->selectedObjects();
        if (std::find(selected.begin(), selected.end(), picture) != selected.end()) models->selecting()->deselectAll();
    }
    picture->removeFromParent();
    window_.documentController()->noteChange();
    window_.sceneView()->redraw();
    refresh();
}

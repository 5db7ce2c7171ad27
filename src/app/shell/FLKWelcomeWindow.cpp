#include "app/shell/FLKWelcomeWindow.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKUserDefaultsKeys.h"
#include "core/platform/FLKUserFeedback.h"

namespace {
const QSize kPreviewSize(180, 180);

// The preview scaled into the cell, centred on a transparent square so all
// cells line up whatever the template's aspect.
QPixmap cellImage(const FLKImage& image, qreal devicePixelRatio) {
    const QImage source(image.rgba.data(), image.width, image.height, image.width * 4, QImage::Format_RGBA8888);
    const QSize pixels = kPreviewSize * devicePixelRatio;
    const QImage scaled = source.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPixmap cell(pixels);
    cell.fill(Qt::transparent);
    QPainter painter(&cell);
    painter.drawImage((pixels.width() - scaled.width()) / 2, (pixels.height() - scaled.height()) / 2, scaled);
    painter.end();
    cell.setDevicePixelRatio(devicePixelRatio);
    return cell;
}
}  // namespace

FLKWelcomeWindow::FLKWelcomeWindow(FLKUserDefaults& defaults, QWidget* parent)
    : QDialog(parent), defaults_(defaults), templates_(FLKTemplateManager::defaultManager().templates()) {
    setWindowTitle("Welcome to Flickwell");
    setAttribute(Qt::WA_DeleteOnClose);

    auto* heading = new QLabel("<h2>Welcome to Flickwell</h2>Choose a template to start your video with.");
    templateList_ = new QListWidget;
    templateList_->setViewMode(QListView::IconMode);
    templateList_->setIconSize(kPreviewSize);
    templateList_->setMovement(QListView::Static);
    templateList_->setResizeMode(QListView::Adjust);
    templateList_->setWordWrap(true);
    // One cell a template, wide enough for the preview and its name.
    const QSize cell(kPreviewSize.width() + 32, kPreviewSize.height() + 48);
    templateList_->setGridSize(cell);
    templateList_->setMinimumSize(3 * cell.width() + 24, 2 * cell.height() + 8);
    for (const auto& aTemplate : templates_) {
        auto* item = new QListWidgetItem(QString::fromStdString(aTemplate->name()), templateList_);
        item->setTextAlignment(Qt::AlignHCenter);
    }
    if (templateList_->count() > 0) templateList_->setCurrentRow(0);

    showAtLaunchBox_ = new QCheckBox("Show this window when Flickwell starts");
    showAtLaunchBox_->setChecked(flk::shouldShowWelcomeScreen(defaults_));
    connect(showAtLaunchBox_, &QCheckBox::toggled, this,
            [this](bool checked) { flk::setShouldShowWelcomeScreen(checked, defaults_); });

    auto* buttons = new QDialogButtonBox;
    startButton_ = buttons->addButton("Start", QDialogButtonBox::AcceptRole);
    startButton_->setDefault(true);
    startButton_->setEnabled(templateList_->count() > 0);
    buttons->addButton("Close", QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(startButton_, &QPushButton::clicked, this, [this] { chooseTemplateAtRow(templateList_->currentRow()); });
    connect(templateList_, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { chooseTemplateAtRow(templateList_->row(item)); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(templateList_, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(showAtLaunchBox_);
    bottom->addStretch();
    bottom->addWidget(buttons);
    layout->addLayout(bottom);

    // Decoding every preview at once would hold up the first paint.
    QTimer::singleShot(0, this, &FLKWelcomeWindow::loadNextPreview);
}

void FLKWelcomeWindow::loadNextPreview() {
    if (!isLoadingPreviews()) return;
    const size_t row = nextPreview_++;
    const auto& preview = templates_[row]->thumbnail();
    if (preview && !preview->isEmpty()) {
        templateList_->item(static_cast<int>(row))->setIcon(QIcon(cellImage(*preview, devicePixelRatioF())));
    }
    QTimer::singleShot(0, this, &FLKWelcomeWindow::loadNextPreview);
}

bool FLKWelcomeWindow::chooseTemplateAtRow(int row) {
    if (row < 0 || static_cast<size_t>(row) >= templates_.size()) return false;
    const auto& chosen = templates_[static_cast<size_t>(row)];
    auto& manager = FLKTemplateManager::defaultManager();
    const size_t previous = manager.selectedTemplateIndex();
    manager.selectTemplateNamed(chosen->name());
    FLKError error;
    if (!FLKSceneLoader::defaultSceneLoader().loadSceneFromTemplate(chosen, &error)) {
        manager.setSelectedTemplateIndex(previous);
        FLKUserFeedback::shared().presentError(error);
        return false;
    }
    accept();
    return true;
}

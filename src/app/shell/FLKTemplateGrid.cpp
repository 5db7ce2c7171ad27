#include "app/shell/FLKTemplateGrid.h"

#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QTimer>

#include "core/model/FLKTemplateManager.h"

namespace {
// The preview scaled into the cell, centred on a transparent square so all
// cells line up whatever the template's aspect.
QPixmap cellImage(const FLKImage& image, QSize size, qreal devicePixelRatio) {
    const QImage source(image.rgba.data(), image.width, image.height, image.width * 4, QImage::Format_RGBA8888);
    const QSize pixels = size * devicePixelRatio;
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

FLKTemplateGrid::FLKTemplateGrid(int previewSide, QWidget* parent)
    : QListWidget(parent), previewSize_(previewSide, previewSide) {
    setViewMode(QListView::IconMode);
    setIconSize(previewSize_);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setWordWrap(true);
    // One cell a template, wide enough for the preview and its name.
    setGridSize(QSize(previewSize_.width() + 32, previewSize_.height() + 48));
    reload();
}

void FLKTemplateGrid::reload() {
    auto& manager = FLKTemplateManager::defaultManager();
    templates_ = manager.templates();
    nextPreview_ = 0;
    ++generation_;
    clear();
    for (const auto& aTemplate : templates_) {
        auto* item = new QListWidgetItem(QString::fromStdString(aTemplate->name()), this);
        item->setTextAlignment(Qt::AlignHCenter);
        item->setToolTip(item->text());
        // The whole cell, so previews line up whatever the name's width.
        item->setSizeHint(gridSize() - QSize(4, 4));
    }
    const size_t selected = manager.selectedTemplateIndex();
    if (selected < templates_.size()) {
        setCurrentRow(static_cast<int>(selected));
    } else if (count() > 0) {
        setCurrentRow(0);
    }
    QTimer::singleShot(0, this, [this, generation = generation_] {
        if (generation == generation_) loadNextPreview();
    });
}

std::shared_ptr<FLKTemplate> FLKTemplateGrid::templateAtRow(int row) const {
    if (row < 0 || static_cast<size_t>(row) >= templates_.size()) return nullptr;
    return templates_[static_cast<size_t>(row)];
}

void FLKTemplateGrid::loadNextPreview() {
    if (!isLoadingPreviews()) return;
    const size_t row = nextPreview_++;
    const auto& preview = templates_[row]->thumbnail();
    if (preview && !preview->isEmpty()) {
        item(static_cast<int>(row))->setIcon(QIcon(cellImage(*preview, previewSize_, devicePixelRatioF())));
    }
    QTimer::singleShot(0, this, [this, generation = generation_] {
        if (generation == generation_) loadNextPreview();
    });
}

#include "app/sidepanel/FLKRecentRecordingsList.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QUrl>

#include "editing/FLKRecentlyRecordedItemViewModel.h"
#include "editing/FLKRecordingItemMenuViewModel.h"

namespace {
const QSize kCell(FLKRecentRecordingsList::kThumbnailSide, FLKRecentRecordingsList::kThumbnailSide);

// The picture centred on a dark square, so portrait and landscape line up.
QIcon thumbnailIcon(const FLKImage* image) {
    QPixmap cell(kCell);
    cell.fill(QColor(40, 40, 44));
    if (image && !image->isEmpty()) {
        const QImage source(image->rgba.data(), image->width, image->height, image->width * 4,
                            QImage::Format_RGBA8888);
        const QImage scaled = source.scaled(kCell, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QPainter painter(&cell);
        painter.drawImage((kCell.width() - scaled.width()) / 2, (kCell.height() - scaled.height()) / 2, scaled);
    }
    return QIcon(cell);
}
}  // namespace

FLKRecentRecordingsList::FLKRecentRecordingsList(QWidget* parent) : QListWidget(parent) {
    setObjectName("recentRecordings");
    setIconSize(kCell);
    setUniformItemSizes(true);
    setSpacing(2);
    setSelectionMode(QAbstractItemView::SingleSelection);
    connect(this, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) { emit loadRequested(row(item)); });
}

void FLKRecentRecordingsList::setItems(std::vector<std::shared_ptr<FLKRecentlyRecordedItemViewModel>> items) {
    items_ = std::move(items);
    ++generation_;
    pendingThumbnails_ = 0;
    clear();
    const QIcon placeholder = thumbnailIcon(nullptr);
    for (size_t index = 0; index < items_.size(); ++index) {
        const auto& model = items_[index];
        auto* item = new QListWidgetItem(placeholder, QString::fromStdString(model->name()), this);
        item->setToolTip(QString::fromStdString(model->itemURL().string()));
        ++pendingThumbnails_;
        QPointer<FLKRecentRecordingsList> self(this);
        const unsigned generation = generation_;
        const int row = static_cast<int>(index);
        // A cached thumbnail comes at once, a new one later on this thread.
        model->asyncLoadImage([self, generation, row](std::shared_ptr<const FLKImage> image, bool) {
            if (!self || self->generation_ != generation) return;
            --self->pendingThumbnails_;
            if (QListWidgetItem* shown = self->item(row)) shown->setIcon(thumbnailIcon(image.get()));
        });
    }
}

std::shared_ptr<FLKRecentlyRecordedItemViewModel> FLKRecentRecordingsList::itemAtRow(int row) const {
    if (row < 0 || static_cast<size_t>(row) >= items_.size()) return nullptr;
    return items_[static_cast<size_t>(row)];
}

QMenu* FLKRecentRecordingsList::makeContextMenu(int row) {
    auto model = itemAtRow(row);
    if (!model) return nullptr;
    auto* menu = new QMenu(this);
    const QString path = QString::fromStdString(model->itemURL().string());
    auto itemMenu = model->contextMenuViewModel();
    menu->addAction("Show in File Manager", this, [path] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
    });
    // The store's watch brings the list up to date after a move or a rename.
    menu->addAction("Move to Trash", this, [path] { QFile::moveToTrash(path); });
    menu->addAction("Rename...", this, [this, itemMenu] {
        renaming_ = itemMenu;
        renaming_->rename();
    });
    return menu;
}

void FLKRecentRecordingsList::contextMenuEvent(QContextMenuEvent* event) {
    QListWidgetItem* clicked = itemAt(event->pos());
    if (!clicked) return;
    setCurrentItem(clicked);
    QMenu* menu = makeContextMenu(row(clicked));
    if (!menu) return;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

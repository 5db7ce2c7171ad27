#include "app/timeline/FLKTimelineView.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

#include "app/timeline/FLKTimelineThumbnails.h"
#include "core/media/FLKAsset.h"
#include "core/model/FLKTimelineClipFactory.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoTransitionClip.h"
#include "editing/FLKTimelinePanelViewModel.h"

namespace {
// Room after the last clip to drop another one.
constexpr double kRightInset = 40;
constexpr double kCellHeight = FLKTimelineClipViewModel::kCellHeight;
constexpr double kPointsPerSecond = FLKTimelineClipViewModel::kPointsPerSecond;
constexpr const char* kErrorDomain = "FLKTimelineViewErrorDomain";

const QColor kBackground(0x26, 0x27, 0x2b);
const QColor kRulerBackground(0x31, 0x33, 0x38);
const QColor kRulerText(0xb8, 0xbc, 0xc4);
const QColor kCellFill(0x3b, 0x4a, 0x5e);
const QColor kCellBorder(0x14, 0x16, 0x1a);
const QColor kSelection(0x4c, 0x9a, 0xff);
const QColor kPlaceholder(0x8a, 0x90, 0x9c);
const QColor kTransitionFill(0x8e, 0x5c, 0xd9, 0xd8);
const QColor kPlayHead(0xe5, 0x48, 0x4d);

std::vector<std::filesystem::path> movieFilesIn(const QMimeData* mimeData) {
    std::vector<std::filesystem::path> files;
    if (!mimeData || !mimeData->hasUrls()) return files;
    for (const QUrl& url : mimeData->urls()) {
        if (!url.isLocalFile()) continue;
        std::filesystem::path path = url.toLocalFile().toStdString();
        if (FLKTimelineClipFactory::isMovieFile(path)) files.push_back(std::move(path));
    }
    return files;
}

// A ruler step of a round number of seconds at least `minimumWidth` wide.
double rulerStep(double pointsPerSecond, double minimumWidth) {
    for (double step : {0.1, 0.25, 0.5, 1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0}) {
        if (step * pointsPerSecond >= minimumWidth) return step;
    }
    return 1200;
}

QString rulerLabel(double seconds, double step) {
    const int whole = static_cast<int>(std::floor(seconds + 1e-6));
    if (step < 1) return QString::number(seconds, 'f', step < 0.5 ? 2 : 1) + "s";
    if (seconds < 60) return QString::number(whole) + "s";
    return QString("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QChar('0'));
}

// "0:20.0": minutes, seconds and tenths.
QString clipLength(double seconds) {
    const auto tenths = static_cast<long>(std::lround(seconds * 10));
    return QString("%1:%2.%3").arg(tenths / 600).arg(tenths / 10 % 60, 2, 10, QChar('0')).arg(tenths % 10);
}

bool isTransition(const FLKTimelineClipViewModel& cell) { return cell.clip()->type() == FLKTimelineClip::kTransition; }
bool isVideo(const FLKTimelineClipViewModel& cell) { return cell.clip()->type() == FLKTimelineClip::kVideo; }
}  // namespace

FLKTimelineView::FLKTimelineView(QScrollArea* scrollArea)
    : scrollArea_(scrollArea), thumbnails_(std::make_unique<FLKTimelineThumbnails>([this] { update(); })) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    scrollArea_->viewport()->installEventFilter(this);
}

FLKTimelineView::~FLKTimelineView() { stopObservingViewModel(); }

void FLKTimelineView::setViewModel(std::shared_ptr<FLKTimelinePanelViewModel> viewModel) {
    stopObservingViewModel();
    gesture_ = Gesture::none;
    pressedCell_.reset();
    pressedViewModel_.reset();
    viewModel_ = std::move(viewModel);
    observeViewModel();
    relayout();
}

void FLKTimelineView::observeViewModel() {
    if (!viewModel_) return;
    viewModel_->layoutViewModel()->setCollectionViewEdgeInsets({kTopInset, 0, kBottomInset, kRightInset});
    auto rowsDidChange = [this] {
        relayout();
        emit rowsChanged();
    };
    viewModel_->setDiffHandler([rowsDidChange](const auto&) { rowsDidChange(); });
    viewModel_->setUpdatesHandler([rowsDidChange](const auto&) { rowsDidChange(); });
    propertyToken_ = viewModel_->addPropertyObserver([this, rowsDidChange](const std::string& property) {
        if (property == "trackViewModels") return rowsDidChange();
        if (property == "currentTime") {
            // Only the strips under the play head's old and new places change.
            updatePlayHeadArea();
            emit playHeadChanged();
            return;
        }
        if (property == "isPlaying") emit playHeadChanged();
        update();
    });
}

void FLKTimelineView::stopObservingViewModel() {
    if (!viewModel_) return;
    viewModel_->setDiffHandler({});
    viewModel_->setUpdatesHandler({});
    viewModel_->removePropertyObserver(propertyToken_);
}

// Geometry

double FLKTimelineView::xForTime(double seconds) const { return seconds * kPointsPerSecond * zoom_; }

double FLKTimelineView::pointsForX(double x) const { return x / zoom_; }

double FLKTimelineView::rowTop(size_t section) const {
    return kTopInset + static_cast<double>(section) * (kCellHeight + kRowGap);
}

std::optional<size_t> FLKTimelineView::sectionAt(double y) const {
    if (!viewModel_ || y < kTopInset) return std::nullopt;
    const auto section = static_cast<size_t>((y - kTopInset) / (kCellHeight + kRowGap));
    if (section >= viewModel_->trackViewModels().size() || y > rowTop(section) + kCellHeight) return std::nullopt;
    return section;
}

QRectF FLKTimelineView::cellRect(const FLKIndexPath& indexPath) const {
    if (!viewModel_) return {};
    const FLKRect frame = viewModel_->layoutViewModel()->frameForItemAtIndexPath(indexPath);
    if (frame.size.width <= 0) return {};
    // The layout's frames carry the (unzoomed) left inset, which is zero here.
    return {frame.origin.x * zoom_, rowTop(indexPath.section), frame.size.width * zoom_, frame.size.height};
}

std::optional<FLKIndexPath> FLKTimelineView::indexPathAt(QPointF position) const {
    const auto section = sectionAt(position.y());
    if (!section) return std::nullopt;
    const auto& cells = viewModel_->trackViewModels()[*section]->clipViewModels();
    for (bool transitions : {true, false}) {
        for (size_t item = 0; item < cells.size(); ++item) {
            if (isTransition(*cells[item]) != transitions) continue;
            if (cellRect({*section, item}).contains(position)) return FLKIndexPath{*section, item};
        }
    }
    return std::nullopt;
}

std::shared_ptr<FLKTimelineVideoTrackViewModel> FLKTimelineView::videoRow(size_t section) const {
    return viewModel_ ? viewModel_->draggableTrackViewModelAtIndex(section) : nullptr;
}

void FLKTimelineView::relayout() {
    const QSize viewport = scrollArea_->viewport()->size();
    if (!viewModel_) {
        resize(viewport);
        update();
        return;
    }
    auto layout = viewModel_->layoutViewModel();
    layout->setCollectionViewSize({viewport.width() / zoom_, static_cast<double>(viewport.height())});
    const FLKSize content = layout->contentSize();
    const size_t rows = std::max<size_t>(1, viewModel_->trackViewModels().size());
    const double height = rowTop(rows - 1) + kCellHeight + kBottomInset;
    resize(static_cast<int>(std::ceil(content.width * zoom_)), std::max(viewport.height(), static_cast<int>(height)));

    std::vector<std::shared_ptr<FLKVideoClip>> clips;
    // The clip being dragged is out of its row meanwhile but keeps its pictures.
    if (gesture_ == Gesture::draggingClip) {
        if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(pressedViewModel_->clip())) clips.push_back(video);
    }
    for (const auto& row : viewModel_->trackViewModels()) {
        for (const auto& cell : row->clipViewModels()) {
            if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(cell->clip())) clips.push_back(video);
        }
    }
    thumbnails_->keepOnly(clips);
    update();
}

bool FLKTimelineView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == scrollArea_->viewport() && event->type() == QEvent::Resize) relayout();
    return QWidget::eventFilter(watched, event);
}

void FLKTimelineView::setZoom(double zoom, double anchorX) {
    zoom = std::clamp(zoom, kMinimumZoom, kMaximumZoom);
    if (zoom == zoom_) return;
    QScrollBar* bar = scrollArea_->horizontalScrollBar();
    const double points = pointsForX(bar->value() + anchorX);
    zoom_ = zoom;
    relayout();
    bar->setValue(static_cast<int>(std::lround(points * zoom_ - anchorX)));
}

void FLKTimelineView::ensurePlayHeadVisible() {
    if (!viewModel_) return;
    const int x = static_cast<int>(xForTime(viewModel_->currentTime()));
    scrollArea_->ensureVisible(x, scrollArea_->verticalScrollBar()->value(), scrollArea_->viewport()->width() / 4, 0);
}

// Painting

void FLKTimelineView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), kBackground);
    paintRuler(painter, event->rect());
    if (!viewModel_) return;
    painter.setRenderHint(QPainter::Antialiasing);

    const auto& rows = viewModel_->trackViewModels();
    bool empty = true;
    for (size_t section = 0; section < rows.size(); ++section) {
        const auto& cells = rows[section]->clipViewModels();
        empty = empty && cells.empty();
        // Transitions go over the seams they join.
        for (bool transitions : {false, true}) {
            for (size_t item = 0; item < cells.size(); ++item) {
                if (isTransition(*cells[item]) != transitions) continue;
                const QRectF rect = cellRect({section, item});
                if (rect.intersects(event->rect())) paintCell(painter, *cells[item], rect);
            }
        }
    }
    if (empty) {
        painter.setPen(kRulerText);
        painter.drawText(QRectF(12, rowTop(0), scrollArea_->viewport()->width() - 24, kCellHeight),
                         Qt::AlignVCenter | Qt::AlignLeft, "Drop video files here to add them to the timeline.");
    }
    if (gesture_ == Gesture::draggingClip && pressedViewModel_) {
        // The picked-up clip follows the pointer over the rows.
        QRectF floating(pointer_ - grabOffset_, QSizeF(pressedViewModel_->cellSize().width * zoom_, kCellHeight));
        floating.moveTop(rowTop(dropSection_.value_or(0)) - 6);
        painter.setOpacity(0.75);
        paintCell(painter, *pressedViewModel_, floating);
        painter.setOpacity(1);
    }
    paintPlayHead(painter);
}

void FLKTimelineView::paintRuler(QPainter& painter, const QRect& exposed) const {
    const QRectF ruler(exposed.left(), 0, exposed.width(), kRulerHeight);
    painter.fillRect(ruler, kRulerBackground);
    const double pointsPerSecond = kPointsPerSecond * zoom_;
    const double step = rulerStep(pointsPerSecond, 56);
    painter.setPen(kRulerText);
    QFont font = painter.font();
    font.setPointSizeF(8);
    painter.setFont(font);
    const auto first = static_cast<long>(std::floor(exposed.left() / (step * pointsPerSecond)));
    const auto last = static_cast<long>(std::ceil(exposed.right() / (step * pointsPerSecond)));
    for (long i = std::max(0L, first); i <= last; ++i) {
        const double seconds = static_cast<double>(i) * step;
        const double x = std::round(xForTime(seconds)) + 0.5;
        painter.drawLine(QPointF(x, kRulerHeight - 8), QPointF(x, kRulerHeight));
        const double half = x + step * pointsPerSecond / 2;
        painter.drawLine(QPointF(half, kRulerHeight - 4), QPointF(half, kRulerHeight));
        painter.drawText(QPointF(x + 3, kRulerHeight - 10), rulerLabel(seconds, step));
    }
}

void FLKTimelineView::paintCell(QPainter& painter, const FLKTimelineClipViewModel& cell, const QRectF& rect) {
    const QRectF box = rect.adjusted(0.5, 0.5, -0.5, -0.5);
    const auto type = cell.clip()->type();
    if (type == FLKTimelineClip::kPlaceholder) {
        painter.setPen(QPen(kPlaceholder, 1.5, Qt::DashLine));
        painter.setBrush(QColor(255, 255, 255, 18));
        painter.drawRoundedRect(box.adjusted(2, 2, -2, -2), 6, 6);
        return;
    }
    if (type == FLKTimelineClip::kTransition) {
        // The usual mark of a transition: two triangles meeting in the middle.
        const QRectF band = box.adjusted(0, 14, 0, -14);
        painter.setPen(QPen(cell.isSelected() ? kSelection : kCellBorder, cell.isSelected() ? 2.5 : 1));
        painter.setBrush(kTransitionFill);
        painter.drawRoundedRect(band, 5, 5);
        const QPointF c = band.center();
        const double w = std::min(band.width() / 2 - 4, 12.0), h = 12;
        QPainterPath bowtie;
        bowtie.moveTo(c.x() - w, c.y() - h);
        bowtie.lineTo(c.x() + w, c.y() + h);
        bowtie.lineTo(c.x() + w, c.y() - h);
        bowtie.lineTo(c.x() - w, c.y() + h);
        bowtie.closeSubpath();
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, 200));
        if (w > 2) painter.drawPath(bowtie);
        return;
    }

    QPainterPath shape;
    shape.addRoundedRect(box, 6, 6);
    painter.save();
    painter.setClipPath(shape);
    painter.fillRect(box, kCellFill);
    auto video = std::dynamic_pointer_cast<FLKVideoClip>(cell.clip());
    if (video && video->duration() > 0) {
        const auto& pictures = thumbnails_->thumbnailsForClip(video, rect.size());
        if (!pictures.empty()) {
            const QImage& sample = pictures.front().image;
            const double tileWidth = std::max(8.0, sample.width() * kCellHeight / std::max(1, sample.height()));
            for (double x = box.left(); x < box.right(); x += tileWidth) {
                const double time = video->clipRange().start + (x - box.left()) / box.width() * video->duration();
                if (const auto* picture = FLKTimelineThumbnails::nearest(pictures, time)) {
                    painter.drawImage(QRectF(x, box.top(), tileWidth, box.height()), picture->image);
                }
            }
        }
    }
    // The clip's length on a dark strip, readable over any picture. (Files
    // in a document's media carry generated names, of no use here.)
    const QRectF strip(box.left(), box.bottom() - 18, box.width(), 18);
    painter.fillRect(strip, QColor(0, 0, 0, 140));
    painter.setPen(Qt::white);
    QFont font = painter.font();
    font.setPointSizeF(8);
    painter.setFont(font);
    painter.drawText(strip.adjusted(6, 0, -6, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     painter.fontMetrics().elidedText(clipLength(cell.clip()->duration()), Qt::ElideRight,
                                                      static_cast<int>(strip.width() - 12)));
    painter.restore();

    painter.setBrush(Qt::NoBrush);
    painter.setPen(cell.isSelected() ? QPen(kSelection, 3) : QPen(kCellBorder, 1));
    painter.drawRoundedRect(cell.isSelected() ? box.adjusted(1, 1, -1, -1) : box, 6, 6);
}

void FLKTimelineView::updatePlayHeadArea() {
    const double x = std::round(xForTime(viewModel_->currentTime()));
    const auto strip = [this](double at) { return QRect(static_cast<int>(at) - 8, 0, 17, height()); };
    update(strip(x));
    if (paintedPlayHeadX_ != x) update(strip(paintedPlayHeadX_));
}

void FLKTimelineView::paintPlayHead(QPainter& painter) {
    const double x = std::round(xForTime(viewModel_->currentTime())) + 0.5;
    paintedPlayHeadX_ = x - 0.5;
    painter.setPen(QPen(kPlayHead, 1.5));
    painter.drawLine(QPointF(x, kRulerHeight - 10), QPointF(x, height()));
    QPainterPath head;
    head.moveTo(x - 6, 0);
    head.lineTo(x + 6, 0);
    head.lineTo(x + 6, kRulerHeight - 14);
    head.lineTo(x, kRulerHeight - 8);
    head.lineTo(x - 6, kRulerHeight - 14);
    head.closeSubpath();
    painter.setPen(Qt::NoPen);
    painter.setBrush(kPlayHead);
    painter.drawPath(head);
}

// Pointer

void FLKTimelineView::seekTo(double x) {
    if (!viewModel_) return;
    viewModel_->updateCursorLocation(pointsForX(x));
    update();
}

void FLKTimelineView::refreshHover(QPointF position) {
    if (!viewModel_) return;
    const auto hit = indexPathAt(position);
    const auto& rows = viewModel_->trackViewModels();
    for (size_t section = 0; section < rows.size(); ++section) {
        auto hovered = hit && hit->section == section ? rows[section]->viewModelAtIndex(hit->item) : nullptr;
        if (rows[section]->hoveredOverViewModel() != hovered) rows[section]->setHoveredOverViewModel(hovered);
    }
}

void FLKTimelineView::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    if (!viewModel_ || event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    pressPosition_ = pointer_ = event->position();
    pressedCell_ = indexPathAt(event->position());
    if (pressedCell_) {
        pressedViewModel_ = viewModel_->viewModelAtIndexPath(*pressedCell_);
        auto row = viewModel_->trackViewModelAtIndex(pressedCell_->section);
        viewModel_->trackViewModel(*row, pressedViewModel_);
        grabOffset_ = event->position() - cellRect(*pressedCell_).topLeft();
        gesture_ = Gesture::pressedOnClip;
    } else {
        gesture_ = Gesture::scrubbing;
    }
    seekTo(event->position().x());
}

void FLKTimelineView::mouseMoveEvent(QMouseEvent* event) {
    pointer_ = event->position();
    switch (gesture_) {
        case Gesture::none:
            refreshHover(event->position());
            break;
        case Gesture::scrubbing:
            seekTo(event->position().x());
            break;
        case Gesture::pressedOnClip:
            if ((event->position() - pressPosition_).manhattanLength() >= QApplication::startDragDistance() &&
                pickUpPressedClip()) {
                moveDraggedClip(event->position().x());
            }
            break;
        case Gesture::draggingClip:
            moveDraggedClip(event->position().x());
            break;
    }
}

bool FLKTimelineView::pickUpPressedClip() {
    auto row = videoRow(pressedCell_->section);
    if (!row || !isVideo(*pressedViewModel_)) return false;
    row->beginDraggingForViewModel(pressedViewModel_);
    if (!row->draggingViewModel()) return false;
    gesture_ = Gesture::draggingClip;
    dropSection_ = pressedCell_->section;
    dropIndex_ = pressedCell_->item;
    return true;
}

void FLKTimelineView::moveDraggedClip(double x) {
    auto row = videoRow(*dropSection_);
    if (!row) return;
    dropIndex_ = dropIndexAt(*dropSection_, x);
    row->moveDraggingPlaceholderToIndexPath({*dropSection_, dropIndex_});
    update();
}

void FLKTimelineView::mouseReleaseEvent(QMouseEvent* event) {
    if (gesture_ == Gesture::draggingClip) {
        if (auto row = videoRow(*dropSection_)) row->endDraggingToIndexPath({*dropSection_, dropIndex_});
    }
    if (gesture_ == Gesture::none) return QWidget::mouseReleaseEvent(event);
    gesture_ = Gesture::none;
    pressedCell_.reset();
    pressedViewModel_.reset();
    dropSection_.reset();
    refreshHover(event->position());
    update();
}

// Where the dragged clip would land: the clip (not a transition) under the
// pointer, or the last place past the end.
size_t FLKTimelineView::dropIndexAt(size_t section, double x) const {
    const auto& cells = viewModel_->trackViewModels()[section]->clipViewModels();
    const double seconds = pointsForX(x) / kPointsPerSecond;
    for (size_t item = 0; item < cells.size(); ++item) {
        if (!isTransition(*cells[item]) && seconds < cells[item]->drawRange().end) return item;
    }
    return cells.empty() ? 0 : cells.size() - 1;
}

void FLKTimelineView::leaveEvent(QEvent* event) {
    if (gesture_ == Gesture::none) refreshHover(QPointF(-1, -1));
    QWidget::leaveEvent(event);
}

void FLKTimelineView::wheelEvent(QWheelEvent* event) {
    const QPoint delta = event->angleDelta();
    if (event->modifiers() & Qt::ControlModifier) {
        const double anchor = event->position().x() - scrollArea_->horizontalScrollBar()->value();
        setZoom(zoom_ * std::pow(1.25, delta.y() / 120.0), anchor);
    } else {
        // The rows run sideways: an ordinary wheel moves along them.
        QScrollBar* bar = scrollArea_->horizontalScrollBar();
        bar->setValue(bar->value() - (delta.x() != 0 ? delta.x() : delta.y()));
    }
    event->accept();
}

bool FLKTimelineView::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            const double anchor = gesture->position().x() - scrollArea_->horizontalScrollBar()->value();
            setZoom(zoom_ * (1 + gesture->value()), anchor);
            return true;
        }
    }
    return QWidget::event(event);
}

void FLKTimelineView::deleteSelectedClips() {
    if (!viewModel_) return;
    for (size_t section = 0; section < viewModel_->trackViewModels().size(); ++section) {
        if (auto row = videoRow(section)) row->deleteWithViewModel(*row);
    }
    update();
}

void FLKTimelineView::keyPressEvent(QKeyEvent* event) {
    if (!viewModel_) return QWidget::keyPressEvent(event);
    switch (event->key()) {
        case Qt::Key_Space:
            viewModel_->togglePlay();
            break;
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            deleteSelectedClips();
            break;
        default:
            return QWidget::keyPressEvent(event);
    }
    update();
}

// Context menu

std::unique_ptr<QMenu> FLKTimelineView::contextMenuAt(QPoint position) {
    auto menu = std::make_unique<QMenu>(this);
    QAction* trimLeft = menu->addAction("Trim Left");
    QAction* trimRight = menu->addAction("Trim Right");
    QAction* split = menu->addAction("Split");
    menu->addSeparator();
    QAction* remove = menu->addAction("Delete");
    menu->addSeparator();
    QAction* addTransition = menu->addAction("Add Transition");
    QAction* removeTransition = menu->addAction("Remove Transition");
    for (QAction* action : menu->actions()) action->setEnabled(false);

    const auto hit = viewModel_ ? indexPathAt(position) : std::nullopt;
    auto row = hit ? videoRow(hit->section) : nullptr;
    if (!row) return menu;
    auto cell = row->viewModelAtIndex(hit->item);
    // The commands act on the clip under the pointer, which becomes the selection.
    viewModel_->trackViewModel(*row, cell);
    row->setHoveredOverViewModel(cell);
    update();

    QPointer<FLKTimelineView> view(this);
    auto run = [view](QAction* action, std::function<void()> command) {
        QObject::connect(action, &QAction::triggered, action, [view, command] {
            command();
            if (view) view->update();
        });
    };
    const double now = viewModel_->currentTime();
    const FLKTimeRange range = cell->drawRange();
    const bool playHeadInside = range.start < now && now < range.end;
    if (isVideo(*cell)) {
        trimLeft->setEnabled(playHeadInside);
        trimRight->setEnabled(playHeadInside);
        split->setEnabled(playHeadInside);
        // The hover may have moved on while the menu was open.
        run(trimLeft, [row, cell] {
            row->setHoveredOverViewModel(cell);
            row->trimLeftWithViewModel(*row);
        });
        run(trimRight, [row, cell] {
            row->setHoveredOverViewModel(cell);
            row->trimRightWithViewModel(*row);
        });
        run(split, [row, cell] { row->split(cell); });
    }
    remove->setEnabled(isVideo(*cell) || isTransition(*cell));
    run(remove, [panel = viewModel_, row, cell] {
        panel->trackViewModel(*row, cell);
        row->deleteWithViewModel(*row);
    });

    auto next = row->viewModelAtIndex(hit->item + 1);
    const double needed = FLKTimelineVideoTrackViewModel::kTransitionDuration;
    addTransition->setEnabled(isVideo(*cell) && next && isVideo(*next) && cell->clip()->duration() >= needed &&
                              next->clip()->duration() >= needed);
    run(addTransition, [row, cell, next] {
        row->setTransitionClipViewModels({cell, next});
        row->addTransition();
    });

    // A transition is removed from its own cell or from either clip it joins.
    std::shared_ptr<FLKTimelineClipViewModel> transition;
    if (isTransition(*cell)) {
        transition = cell;
    } else if (next && isTransition(*next)) {
        transition = next;
    } else if (hit->item > 0) {
        auto previous = row->viewModelAtIndex(hit->item - 1);
        if (previous && isTransition(*previous)) transition = previous;
    }
    removeTransition->setEnabled(transition != nullptr);
    run(removeTransition, [row, transition] { row->remove({transition}); });
    return menu;
}

void FLKTimelineView::contextMenuEvent(QContextMenuEvent* event) {
    auto menu = contextMenuAt(event->pos());
    menu->exec(event->globalPos());
}

// Dropped files

void FLKTimelineView::dragEnterEvent(QDragEnterEvent* event) {
    if (viewModel_ && !movieFilesIn(event->mimeData()).empty()) event->acceptProposedAction();
}

void FLKTimelineView::dragMoveEvent(QDragMoveEvent* event) {
    if (viewModel_ && !movieFilesIn(event->mimeData()).empty()) event->acceptProposedAction();
}

void FLKTimelineView::dropEvent(QDropEvent* event) {
    const auto files = movieFilesIn(event->mimeData());
    if (!viewModel_ || files.empty()) return;
    event->acceptProposedAction();
    for (const auto& file : files) addMovieFile(file);
}

// The file is checked before it is copied into the document, so a file that
// holds no video is refused with its name instead of becoming an empty clip.
void FLKTimelineView::addMovieFile(const std::filesystem::path& url) {
    const std::string description = "\"" + url.filename().string() + "\" was not added to the timeline.";
    FLKAsset asset(url.string());
    std::string problem;
    if (!asset.isReadable()) {
        problem = asset.failureReason();
    } else if (!asset.hasVideo() || !(asset.duration() > 0)) {
        problem = url.string() + " holds no video.";
    }
    if (!problem.empty()) {
        return FLKUserFeedback::shared().presentError(FLKError::make(kErrorDomain, 1, description, problem));
    }
    auto viewModel = viewModel_;
    FLKTimelineClipFactory factory(
        [viewModel](const std::filesystem::path& copy) { viewModel->loadVideoClipWithURL(copy); });
    FLKError error;
    if (!factory.makeClip(url, &error)) FLKUserFeedback::shared().presentError(error);
}

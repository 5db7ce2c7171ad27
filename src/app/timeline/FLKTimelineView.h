#pragma once

#include <QWidget>

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "editing/FLKIndexPath.h"
#include "editing/FLKPropertyObservable.h"

class FLKTimelineClipViewModel;
class FLKTimelinePanelViewModel;
class FLKTimelineThumbnails;
class FLKTimelineVideoTrackViewModel;
class QMenu;
class QScrollArea;

// The rows of the timeline: a cell per clip at its times, transitions over
// the seams they join, a ruler and the play head. The view models keep their
// geometry at 100 points a second; the zoom stretches it here only.
//
// A click or a drag on the ruler or between cells moves the play head; a
// press on a clip selects it and moves the play head there, and dragging it
// further reorders the row in one undo step. The context menu offers the
// clip commands, Space plays and pauses, Ctrl with the wheel (or a pinch)
// zooms, the wheel scrolls, and video files dropped here become clips.
//
// Main thread only.
class FLKTimelineView : public QWidget {
    Q_OBJECT

public:
    static constexpr double kRulerHeight = 24;
    // Above the first row and below the last.
    static constexpr double kTopInset = kRulerHeight + 6;
    static constexpr double kBottomInset = 10;
    static constexpr double kRowGap = 8;
    static constexpr double kMinimumZoom = 0.05;
    static constexpr double kMaximumZoom = 8;

    // Scrolled inside `scrollArea`, which it also zooms and scrolls.
    explicit FLKTimelineView(QScrollArea* scrollArea);
    ~FLKTimelineView() override;

    const std::shared_ptr<FLKTimelinePanelViewModel>& viewModel() const { return viewModel_; }
    void setViewModel(std::shared_ptr<FLKTimelinePanelViewModel> viewModel);
    // Removes the selected clips and transitions, one undo step; Edit, Delete.
    void deleteSelectedClips();

    double zoom() const { return zoom_; }
    // Keeps the timeline moment under `anchorX` (in the scroll area's
    // viewport) where it is.
    void setZoom(double zoom, double anchorX = 0);

    // Geometry in this widget's coordinates.
    double xForTime(double seconds) const;
    // The view models' points for a position of this widget.
    double pointsForX(double x) const;
    QRectF cellRect(const FLKIndexPath& indexPath) const;
    // The cell under a position: transitions first, as they lie on top.
    std::optional<FLKIndexPath> indexPathAt(QPointF position) const;

    // The clip commands for the cell at `position`; the clip becomes the
    // selected and hovered one. Every action is there, disabled where it
    // cannot apply.
    std::unique_ptr<QMenu> contextMenuAt(QPoint position);

    // Scrolls the play head into view (it follows playback).
    void ensurePlayHeadVisible();

signals:
    // A row changed: clips came, went, moved or were trimmed.
    void rowsChanged();
    // The play head was moved, or playing started or stopped, from here.
    void playHeadChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    enum class Gesture { none, scrubbing, pressedOnClip, draggingClip };

    void observeViewModel();
    void stopObservingViewModel();
    void relayout();
    void refreshHover(QPointF position);
    void addMovieFile(const std::filesystem::path& url);
    double rowTop(size_t section) const;
    std::optional<size_t> sectionAt(double y) const;
    std::shared_ptr<FLKTimelineVideoTrackViewModel> videoRow(size_t section) const;
    void seekTo(double x);
    bool pickUpPressedClip();
    void moveDraggedClip(double x);
    size_t dropIndexAt(size_t section, double x) const;

    void paintRuler(QPainter& painter, const QRect& exposed) const;
    void paintCell(QPainter& painter, const FLKTimelineClipViewModel& cell, const QRectF& rect);
    void paintPlayHead(QPainter& painter);
    void updatePlayHeadArea();

    QScrollArea* const scrollArea_;
    std::shared_ptr<FLKTimelinePanelViewModel> viewModel_;
    FLKPropertyObservable::ObserverToken propertyToken_ = 0;
    std::unique_ptr<FLKTimelineThumbnails> thumbnails_;
    double zoom_ = 1;

    Gesture gesture_ = Gesture::none;
    QPointF pressPosition_;
    QPointF pointer_;
    QPointF grabOffset_;  // from the dragged cell's corner to the pointer
    std::optional<FLKIndexPath> pressedCell_;
    std::shared_ptr<FLKTimelineClipViewModel> pressedViewModel_;
    std::optional<size_t> dropSection_;
    size_t dropIndex_ = 0;
    double paintedPlayHeadX_ = 0;  // where the play head was last painted
};

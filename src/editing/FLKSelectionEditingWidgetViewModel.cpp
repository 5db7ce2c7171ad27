#include "editing/FLKSelectionEditingWidgetViewModel.h"

#include <array>
#include <utility>

namespace {

bool isWithin(double value, double low, double high) { return low <= value && value <= high; }

// Squared distance in single precision, as the handles are drawn.
float squaredDistance(FLKPoint a, FLKPoint b) {
    float dx = static_cast<float>(a.x) - static_cast<float>(b.x);
    float dy = static_cast<float>(a.y) - static_cast<float>(b.y);
    return dx * dx + dy * dy;
}

}  // namespace

FLKSelectionEditingWidgetViewModel::FLKSelectionEditingWidgetViewModel(std::shared_ptr<FLKCursorManager> cursorManager,
                                                                       std::shared_ptr<FLKMainQueue> queue,
                                                                       FLKActionPipeline* pipeline)
    : cursorManager_(cursorManager ? std::move(cursorManager) : FLKCursorManager::defaultManager()),
      queue_(std::move(queue)),
      pipeline_(pipeline ? pipeline : &FLKActionPipeline::sharedPipeline()),
      selection_(std::make_shared<FLKSelection>()) {}

FLKSelectionEditingWidgetViewModel::~FLKSelectionEditingWidgetViewModel() {
    *alive_ = false;
    if (mouseScrollEndTimer_) mouseScrollEndTimer_->invalidate();
}

void FLKSelectionEditingWidgetViewModel::setSelection(std::shared_ptr<FLKSelection> selection) {
    selection_ = selection ? std::move(selection) : std::make_shared<FLKSelection>();
    didChangeProperty("selection");
}

bool FLKSelectionEditingWidgetViewModel::swallowsEvent(const FLKEvent&, FLKCanvasView*) {
    return transformingAction_ != nullptr || currentEdge_ != kNoEdge;
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveMouseDownEvent(FLKCanvasView*, const FLKEvent& event) {
    lastPoint_ = event.sceneLocation;
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView*, const FLKEvent& event) {
    FLKPoint location = event.sceneLocation;
    FLKPoint diff = location - lastPoint_;
    lastPoint_ = location;
    // Nothing selected: nothing to move, and no gesture that would hold the events.
    if (selection_->count() == 0) return;
    FLKPoint step = adjustedDiffLocation(diff, location, currentEdge_);
    if (currentEdge_ == kNoEdge) {
        startMoveGestureIfNecessary();
        selection_->moveBy(step);
        cumulativeMoveOffset_ += step;
    } else {
        startStretchGestureIfNecessary();
        selection_->stretchBy(step, currentEdge_);
    }
    updateWidget();
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveMouseUpEvent(FLKCanvasView*, const FLKEvent&) {
    endAction();
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveCancelOperation(FLKCanvasView*) {
    endAction();
    cursorManager_->setCursorType(FLKCursorTypeArrow);
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveMouseMovedEvent(FLKCanvasView*, const FLKEvent& event) {
    updateCurrentEdgeForLocation(event.sceneLocation);
}

void FLKSelectionEditingWidgetViewModel::updateCurrentEdgeForLocation(FLKPoint p) {
    const FLKRect b = selection_->bounds();
    const double minX = b.origin.x, minY = b.origin.y;
    const double maxX = minX + b.size.width, maxY = minY + b.size.height;
    const double r = kHandleRadius;
    size_t edge = kNoEdge;

    const std::array<std::pair<size_t, FLKPoint>, 4> corners{{
        {0, {minX, minY}}, {2, {maxX, minY}}, {4, {maxX, maxY}}, {6, {minX, maxY}}}};
    for (const auto& [index, corner] : corners) {
        if (squaredDistance(corner, p) <= static_cast<float>(r * r)) {
            edge = index;
            edgeOffset_ = corner - p;
            break;
        }
    }
    if (edge == kNoEdge && isWithin(p.x, minX - r, maxX + r)) {
        if (isWithin(p.y, minY - r, minY + r)) {
            edge = 1;
            edgeOffset_ = {0, minY - p.y};
        } else if (isWithin(p.y, maxY - r, maxY + r)) {
            edge = 5;
            edgeOffset_ = {0, maxY - p.y};
        }
    }
    if (edge == kNoEdge && isWithin(p.y, minY - r, maxY + r)) {
        // Checked first, so on a selection narrower than twice the reach the min-x side wins.
        if (isWithin(p.x, minX - r, minX + r)) {
            edge = 7;
            edgeOffset_ = {minX - p.x, 0};
        } else if (isWithin(p.x, maxX - r, maxX + r)) {
            edge = 3;
            edgeOffset_ = {maxX - p.x, 0};
        }
    }

    if (edge == kNoEdge) {
        cursorManager_->setCursorType(selection_->hitTest(p) ? FLKCursorTypeOpenHand : FLKCursorTypeArrow);
    } else {
        cursorManager_->setCursorType(cursorTypeForEdge(edge));
    }
    currentEdge_ = edge;
}

FLKPoint FLKSelectionEditingWidgetViewModel::adjustedDiffLocation(FLKPoint diff, FLKPoint p, size_t edge) const {
    if (edge == kNoEdge) return diff;
    const FLKRect b = selection_->bounds();
    const double edgeX = p.x + edgeOffset_.x;
    const double edgeY = p.y + edgeOffset_.y;
    const bool maxXSide = edge == 2 || edge == 3 || edge == 4;
    const bool minXSide = edge == 0 || edge == 6 || edge == 7;
    const bool maxYSide = edge == 4 || edge == 5 || edge == 6;
    const bool minYSide = edge == 0 || edge == 1 || edge == 2;
    if (maxXSide && b.origin.x > edgeX) return {};
    if (minXSide && edgeX > b.origin.x + b.size.width) return {};
    if (maxYSide && b.origin.y > edgeY) return {};
    if (minYSide && edgeY > b.origin.y + b.size.height) return {};
    return diff;
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveMagnifyEvent(FLKCanvasView*, const FLKEvent& event) {
    if (!event.hasCommandModifier()) return;
    switch (event.phase) {
        case FLKEventPhaseBegan: startActionWithSelection(); break;
        case FLKEventPhaseChanged: magnifyWithFactor(event.magnification); break;
        case FLKEventPhaseEnded: endAction(); break;
        default: break;  // a cancelled pinch stays open until the next gesture ends it
    }
}

void FLKSelectionEditingWidgetViewModel::canvasViewDidReceiveScrollWheelEvent(FLKCanvasView*, const FLKEvent& event) {
    if (!event.hasCommandModifier()) return;
    if (!transformingAction_) startActionWithSelection();
    restartScrollEndTimer();
    magnifyWithFactor(event.scrollingDeltaY / 10);
}

void FLKSelectionEditingWidgetViewModel::restartScrollEndTimer() {
    if (mouseScrollEndTimer_) mouseScrollEndTimer_->invalidate();
    std::weak_ptr<bool> alive = alive_;
    mouseScrollEndTimer_ = FLKTimer::scheduledTimer(
        kScrollBurstEndDelay, false,
        [this, alive](FLKTimer&) {
            auto stillAlive = alive.lock();
            if (!stillAlive || !*stillAlive) return;
            mouseScrollEndTimer_.reset();
            endAction();
        },
        queue_);
}

void FLKSelectionEditingWidgetViewModel::magnifyWithFactor(double factor) {
    selection_->scaleBy(factor + 1);
    updateWidget();
}

void FLKSelectionEditingWidgetViewModel::startActionWithSelection() {
    // An action left open (a cancelled pinch) is committed rather than lost.
    endAction();
    transformingAction_ = FLKSelectionTransformingAction::actionWithSelection(*selection_);
}

void FLKSelectionEditingWidgetViewModel::endAction() {
    if (!transformingAction_) return;
    auto action = std::move(transformingAction_);
    transformingAction_.reset();
    action->finalize();
    pipeline_->execute(action);
}

void FLKSelectionEditingWidgetViewModel::startMoveGestureIfNecessary() {
    if (transformingAction_) return;
    cursorManager_->setCursorType(FLKCursorTypeClosedHand);
    startActionWithSelection();
    cumulativeMoveOffset_ = {};
}

void FLKSelectionEditingWidgetViewModel::startStretchGestureIfNecessary() {
    if (transformingAction_) return;
    startActionWithSelection();
}

int64_t FLKSelectionEditingWidgetViewModel::cursorTypeForEdge(size_t edge) {
    switch (edge) {
        case 0: case 4: return FLKCursorTypeUpLeftDownRight;
        case 1: case 5: return FLKCursorTypeUpDown;
        case 2: case 6: return FLKCursorTypeUpRightDownLeft;
        case 3: case 7: return FLKCursorTypeLeftRight;
        default: return FLKCursorTypeArrow;
    }
}

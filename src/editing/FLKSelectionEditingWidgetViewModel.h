#pragma once

#include <cstddef>
#include <memory>

#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKPoint.h"
#include "core/platform/FLKTimer.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKSelection.h"
#include "editing/FLKSelectionTransformingAction.h"
#include "editing/FLKWidgetViewModel.h"

// The selection frame: drag inside to move, drag one of the eight handles to
// stretch, pinch or Command-scroll to magnify. The model changes live; each
// gesture becomes one undo step. Main thread only.
class FLKSelectionEditingWidgetViewModel : public FLKWidgetViewModel {
public:
    static constexpr size_t kNoEdge = FLKSelection::kNoEdge;
    // Handle reach around the bounds, in scene units.
    static constexpr double kHandleRadius = 10;
    // A scroll-wheel burst ends after this long without a step.
    static constexpr double kScrollBurstEndDelay = 0.5;

    // The scroll timer runs on the given queue (the main queue when null);
    // edits go to the shared pipeline unless another one is given.
    explicit FLKSelectionEditingWidgetViewModel(std::shared_ptr<FLKCursorManager> cursorManager,
                                                std::shared_ptr<FLKMainQueue> queue = nullptr,
                                                FLKActionPipeline* pipeline = nullptr);
    ~FLKSelectionEditingWidgetViewModel() override;

    std::string widgetClass() const override { return "FLKSelectionEditingWidget"; }

    const std::shared_ptr<FLKSelection>& selection() const { return selection_; }
    void setSelection(std::shared_ptr<FLKSelection> selection);
    const std::shared_ptr<FLKSelectionTransformingAction>& transformingAction() const { return transformingAction_; }
    size_t currentEdge() const { return currentEdge_; }
    FLKPoint edgeOffset() const { return edgeOffset_; }
    FLKPoint lastPoint() const { return lastPoint_; }
    FLKPoint cumulativeMoveOffset() const { return cumulativeMoveOffset_; }
    const std::shared_ptr<FLKTimer>& mouseScrollEndTimer() const { return mouseScrollEndTimer_; }

    bool swallowsEvent(const FLKEvent& event, FLKCanvasView* view) override;
    void canvasViewDidReceiveMouseDownEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseUpEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseMovedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMagnifyEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveScrollWheelEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveCancelOperation(FLKCanvasView* view) override;

    // Picks the handle under the point, sets the cursor and stores the edge.
    void updateCurrentEdgeForLocation(FLKPoint location);
    // The drag step, or zero when it would pull the dragged edge across the opposite side.
    FLKPoint adjustedDiffLocation(FLKPoint diff, FLKPoint currentLocation, size_t edge) const;
    void magnifyWithFactor(double factor);

    void startActionWithSelection();
    // Records the open action, if any.
    void endAction();

    static int64_t cursorTypeForEdge(size_t edge);

private:
    void startMoveGestureIfNecessary();
    void startStretchGestureIfNecessary();
    void restartScrollEndTimer();

    std::shared_ptr<FLKCursorManager> cursorManager_;
    std::shared_ptr<FLKMainQueue> queue_;
    FLKActionPipeline* pipeline_;
    std::shared_ptr<FLKSelection> selection_;
    std::shared_ptr<FLKSelectionTransformingAction> transformingAction_;
    size_t currentEdge_ = kNoEdge;
    FLKPoint edgeOffset_;
    FLKPoint lastPoint_;
    FLKPoint cumulativeMoveOffset_;
    std::shared_ptr<FLKTimer> mouseScrollEndTimer_;
    // Lets a pending scroll timer notice that this view model is gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

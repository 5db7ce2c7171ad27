#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "core/platform/FLKPoint.h"
#include "core/scene/FLKShapeEditable.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKShapeEditingAction.h"
#include "editing/FLKWidgetViewModel.h"

// Dragging the corners of one sprite's quad. A drag that would make the quad
// concave or self-crossing is ignored; each grab-and-release is one undo step.
// Main thread only.
class FLKVertexEditingWidgetViewModel : public FLKWidgetViewModel {
public:
    static constexpr size_t kNoCorner = static_cast<size_t>(std::numeric_limits<int64_t>::max());

    explicit FLKVertexEditingWidgetViewModel(std::shared_ptr<FLKCursorManager> cursorManager,
                                             FLKActionPipeline* pipeline = nullptr);

    std::string widgetClass() const override { return "FLKVertexEditingWidget"; }

    // Null while vertex editing is off.
    const std::shared_ptr<FLKShapeEditable>& sprite() const { return sprite_; }
    void setSprite(std::shared_ptr<FLKShapeEditable> sprite);
    double editingRadius() const { return editingRadius_; }
    size_t currentCornerIndex() const { return currentCornerIndex_; }
    FLKPoint currentDistanceVector() const { return currentDistanceVector_; }
    const std::shared_ptr<FLKShapeEditingAction>& currentAction() const { return currentAction_; }

    // The first corner, in the shape's point order, within the editing radius;
    // kNoCorner when none. The vector from the location to that corner is
    // stored in `distanceVector` when given.
    size_t cornerIndexForLocation(FLKPoint location, FLKPoint* distanceVector = nullptr) const;
    bool isLocationNearAnyPointInShape(FLKPoint location) const;

    bool swallowsEvent(const FLKEvent& event, FLKCanvasView* view) override;
    void canvasViewDidReceiveMouseMovedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseDownEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseUpEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveCancelOperation(FLKCanvasView* view) override;

    void startActionWithSprite(const std::shared_ptr<FLKShapeEditable>& sprite);
    void endAction();
    void endActionIfNeeded();

private:
    std::shared_ptr<FLKCursorManager> cursorManager_;
    FLKActionPipeline* pipeline_;
    std::shared_ptr<FLKShapeEditable> sprite_;
    double editingRadius_ = 10;
    size_t currentCornerIndex_ = kNoCorner;
    FLKPoint currentDistanceVector_;
    std::shared_ptr<FLKShapeEditingAction> currentAction_;
};

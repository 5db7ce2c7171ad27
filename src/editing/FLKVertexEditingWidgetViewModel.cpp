#include "editing/FLKVertexEditingWidgetViewModel.h"

#include "core/scene/FLKPlane.h"

FLKVertexEditingWidgetViewModel::FLKVertexEditingWidgetViewModel(std::shared_ptr<FLKCursorManager> cursorManager,
                                                                 FLKActionPipeline* pipeline)
    : cursorManager_(cursorManager ? std::move(cursorManager) : FLKCursorManager::defaultManager()),
      pipeline_(pipeline ? pipeline : &FLKActionPipeline::sharedPipeline()) {}

void FLKVertexEditingWidgetViewModel::setSprite(std::shared_ptr<FLKShapeEditable> sprite) {
    if (sprite_ == sprite) return;
    sprite_ = std::move(sprite);
    // A corner index left from the old sprite would keep swallowing every event.
    currentCornerIndex_ = kNoCorner;
    didChangeProperty("sprite");
}

size_t FLKVertexEditingWidgetViewModel::cornerIndexForLocation(FLKPoint location, FLKPoint* distanceVector) const {
    auto shape = sprite_ ? sprite_->shape() : nullptr;
    if (!shape) return kNoCorner;
    const float radiusSquared = static_cast<float>(editingRadius_ * editingRadius_);
    const auto points = shape->createPoints();
    for (size_t i = 0; i < points.size(); ++i) {
        // Single precision, as the corner markers are drawn.
        float dx = static_cast<float>(points[i].x) - static_cast<float>(location.x);
        float dy = static_cast<float>(points[i].y) - static_cast<float>(location.y);
        if (dx * dx + dy * dy <= radiusSquared) {
            if (distanceVector) *distanceVector = points[i] - location;
            return i;
        }
    }
    return kNoCorner;
}

bool FLKVertexEditingWidgetViewModel::isLocationNearAnyPointInShape(FLKPoint location) const {
    return cornerIndexForLocation(location) != kNoCorner;
}

bool FLKVertexEditingWidgetViewModel::swallowsEvent(const FLKEvent&, FLKCanvasView*) {
    return sprite_ != nullptr || currentCornerIndex_ != kNoCorner;
}

void FLKVertexEditingWidgetViewModel::canvasViewDidReceiveMouseMovedEvent(FLKCanvasView*, const FLKEvent& event) {
    if (!sprite_) return;
    size_t corner = cornerIndexForLocation(event.sceneLocation);
    cursorManager_->setCursorType(corner != kNoCorner ? FLKCursorTypeCrosshair : FLKCursorTypeArrow);
    currentCornerIndex_ = corner;
    updateWidget();
}

void FLKVertexEditingWidgetViewModel::canvasViewDidReceiveMouseDownEvent(FLKCanvasView*, const FLKEvent& event) {
    if (!sprite_) return;
    currentCornerIndex_ = cornerIndexForLocation(event.sceneLocation, &currentDistanceVector_);
    if (currentCornerIndex_ != kNoCorner) {
        startActionWithSprite(sprite_);
    } else {
        auto shape = sprite_->shape();
        if (!shape || !shape->containsPoint(event.sceneLocation)) {
            setSprite(nullptr);
            return;
        }
    }
    updateWidget();
}

void FLKVertexEditingWidgetViewModel::canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView*, const FLKEvent& event) {
    if (!sprite_ || currentCornerIndex_ == kNoCorner) return;
    auto shape = sprite_->shape();
    if (!shape || currentCornerIndex_ >= shape->numPoints()) return;
    auto moved = shape->shapeBySettingPoint(event.sceneLocation + currentDistanceVector_, currentCornerIndex_);
    // A concave or self-crossing quad cannot be drawn with perspective; keep the last good one.
    if (moved && moved->isConvex()) sprite_->setShape(moved);
    updateWidget();
}

void FLKVertexEditingWidgetViewModel::canvasViewDidReceiveMouseUpEvent(FLKCanvasView*, const FLKEvent&) {
    if (!sprite_ || currentCornerIndex_ == kNoCorner) return;
    currentCornerIndex_ = kNoCorner;
    updateWidget();
    endAction();
}

void FLKVertexEditingWidgetViewModel::canvasViewDidReceiveCancelOperation(FLKCanvasView*) {
    endActionIfNeeded();
    setSprite(nullptr);
}

void FLKVertexEditingWidgetViewModel::startActionWithSprite(const std::shared_ptr<FLKShapeEditable>& sprite) {
    currentAction_ = FLKShapeEditingAction::actionWithSprite(sprite);
}

void FLKVertexEditingWidgetViewModel::endAction() {
    auto action = std::move(currentAction_);
    currentAction_.reset();
    if (!action) return;
    action->finalizeWithShape(action->sprite() ? action->sprite()->shape() : nullptr);
    pipeline_->execute(action);
}

void FLKVertexEditingWidgetViewModel::endActionIfNeeded() {
    if (currentAction_) endAction();
}

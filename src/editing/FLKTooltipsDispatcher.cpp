#include "editing/FLKTooltipsDispatcher.h"

#include "core/scene/FLKVideoContainer.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

FLKTooltipsDispatcher::FLKTooltipsDispatcher(const std::shared_ptr<FLKObject>& scene,
                                             std::shared_ptr<FLKSelectionWidgetViewModel> selecting,
                                             std::shared_ptr<FLKVertexEditingWidgetViewModel> cornering)
    : scene_(scene), selecting_(std::move(selecting)), cornering_(std::move(cornering)) {
    selectingToken_ = selecting_->addPropertyObserver([this](const std::string&) { refresh(); });
    corneringToken_ = cornering_->addPropertyObserver([this](const std::string&) { refresh(); });
}

FLKTooltipsDispatcher::~FLKTooltipsDispatcher() {
    selecting_->removePropertyObserver(selectingToken_);
    cornering_->removePropertyObserver(corneringToken_);
}

void FLKTooltipsDispatcher::canvasViewDidReceiveMouseMovedEvent(FLKCanvasView*, const FLKEvent& event) {
    pointerAt(event.sceneLocation);
}

void FLKTooltipsDispatcher::canvasViewDidReceiveMouseEnteredEvent(FLKCanvasView*, const FLKEvent& event) {
    pointerAt(event.sceneLocation);
}

void FLKTooltipsDispatcher::canvasViewDidReceiveMouseExitedEvent(FLKCanvasView*, const FLKEvent&) {
    inside_ = false;
    refresh();
}

void FLKTooltipsDispatcher::canvasViewDidReceiveMouseDownEvent(FLKCanvasView*, const FLKEvent& event) {
    pressed_ = true;
    location_ = event.sceneLocation;
    refresh();
}

void FLKTooltipsDispatcher::canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView*, const FLKEvent& event) {
    pressed_ = true;
    location_ = event.sceneLocation;
    refresh();
}

void FLKTooltipsDispatcher::canvasViewDidReceiveMouseUpEvent(FLKCanvasView*, const FLKEvent& event) {
    pressed_ = false;
    pointerAt(event.sceneLocation);
}

// Zooming or scrolling moves the scene under a still pointer.
void FLKTooltipsDispatcher::canvasViewDidReceiveScrollWheelEvent(FLKCanvasView*, const FLKEvent& event) {
    pointerAt(event.sceneLocation);
}

void FLKTooltipsDispatcher::pointerAt(FLKPoint location) {
    inside_ = true;
    const bool moved = location != location_;
    location_ = location;
    const std::string before = tooltip_;
    refresh();
    // The same hint follows the pointer.
    if (moved && !tooltip_.empty() && tooltip_ == before) didChangeProperty("location");
}

void FLKTooltipsDispatcher::refresh() {
    setTooltip(inside_ && !pressed_ ? tooltipAt(location_) : std::string());
}

std::string FLKTooltipsDispatcher::tooltipAt(FLKPoint location) const {
    if (cornering_->sprite()) {
        return cornering_->cornerIndexForLocation(location) != FLKVertexEditingWidgetViewModel::kNoCorner
                   ? kMoveCorner
                   : kEditCorners;
    }
    auto object = FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene_.lock(), location);
    if (!object) return {};
    if (selecting_->selection()->containsObject(object)) return kMoveOrResize;
    auto container = std::dynamic_pointer_cast<FLKVideoContainer>(object);
    if (container && !container->video()) return kDropRecording;
    return kSelect;
}

void FLKTooltipsDispatcher::setTooltip(std::string tooltip) {
    if (tooltip == tooltip_) return;
    tooltip_ = std::move(tooltip);
    didChangeProperty("tooltip");
}

#include "editing/FLKHoverWidgetViewModel.h"

#include "editing/FLKSelectionWidgetViewModel.h"

void FLKHoverWidgetViewModel::canvasViewDidReceiveMouseMovedEvent(FLKCanvasView*, const FLKEvent& event) {
    setHighlightedObject(FLKSelectionWidgetViewModel::interactableObjectAtLocation(scene_.lock(), event.sceneLocation));
}

void FLKHoverWidgetViewModel::canvasViewDidReceiveMouseExitedEvent(FLKCanvasView*, const FLKEvent&) { removeHighlight(); }

void FLKHoverWidgetViewModel::setHighlightedObject(FLKObject::Ptr object) {
    if (highlightedObject_ == object) return;
    highlightedObject_ = std::move(object);
    didChangeProperty("highlightedObject");
    updateWidget();
}

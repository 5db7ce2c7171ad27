#include "editing/FLKSelectionWidgetViewModel.h"

#include "core/scene/FLKInteractable.h"

FLKSelectionWidgetViewModel::FLKSelectionWidgetViewModel(const std::shared_ptr<FLKObject>& scene,
                                                         std::shared_ptr<FLKSelection> selection)
    : scene_(scene), selection_(selection ? std::move(selection) : std::make_shared<FLKSelection>()) {}

void FLKSelectionWidgetViewModel::selectObject(const FLKObject::Ptr& object) {
    selection_->removeAllObjects();
    selection_->addObject(object);
    didChangeProperty("selectedObjects");
    updateWidget();
}

void FLKSelectionWidgetViewModel::deselectAll() {
    if (selection_->count() == 0) return;
    selection_->removeAllObjects();
    didChangeProperty("selectedObjects");
    updateWidget();
}

std::shared_ptr<FLKShapeEditable> FLKSelectionWidgetViewModel::shapeEditableSprite() const {
    if (selection_->count() != 1) return nullptr;
    return std::dynamic_pointer_cast<FLKShapeEditable>(selection_->selectedObjects().front());
}

void FLKSelectionWidgetViewModel::canvasViewDidReceiveMouseDownEvent(FLKCanvasView*, const FLKEvent& event) {
    const bool extending = event.modifierFlags & FLKEventModifierFlagShift;
    // The frame shows the open hand anywhere over the selection, so a press
    // there keeps the whole group for the drag, even under artwork drawn on
    // top of it (a device frame over its screen).
    if (!extending && selection_->hitTest(event.sceneLocation)) return;
    auto object = interactableObjectAtLocation(scene_.lock(), event.sceneLocation);
    if (!object) {
        if (!extending) deselectAll();
        return;
    }
    if (!extending) return selectObject(object);
    if (selection_->containsObject(object)) {
        selection_->removeObject(object);
    } else {
        selection_->addObject(object);
    }
    didChangeProperty("selectedObjects");
    updateWidget();
}

FLKObject::Ptr FLKSelectionWidgetViewModel::interactableObjectAtLocation(const std::shared_ptr<FLKObject>& scene,
                                                                         FLKPoint location) {
    if (!scene) return nullptr;
    const auto& nodes = scene->recursiveAllChildren();
    for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
        auto interactable = std::dynamic_pointer_cast<FLKInteractable>(*it);
        if (interactable && interactable->isInteractable() && interactable->hitTest(location)) return *it;
    }
    return nullptr;
}

#include "editing/FLKSelectionWidgetViewModel.h"

#include <algorithm>
#include <optional>

#include "core/scene/FLKInteractable.h"
#include "core/scene/FLKVideoContainer.h"

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

namespace {
bool isHitBy(const FLKObject::Ptr& node, FLKPoint location) {
    auto interactable = std::dynamic_pointer_cast<FLKInteractable>(node);
    return interactable && interactable->isInteractable() && interactable->hitTest(location);
}

std::optional<FLKRect> shapeBounds(const FLKObject::Ptr& node) {
    auto editable = std::dynamic_pointer_cast<FLKShapeEditable>(node);
    auto shape = editable ? editable->shape() : nullptr;
    if (!shape) return std::nullopt;
    return shape->bounds();
}
}  // namespace

FLKObject::Ptr FLKSelectionWidgetViewModel::interactableObjectAtLocation(const std::shared_ptr<FLKObject>& scene,
                                                                         FLKPoint location) {
    if (!scene) return nullptr;
    const auto& nodes = scene->recursiveAllChildren();
    auto top = std::find_if(nodes.rbegin(), nodes.rend(), [&](const auto& node) { return isHitBy(node, location); });
    if (top == nodes.rend()) return nullptr;
    if (std::dynamic_pointer_cast<FLKVideoContainer>(*top)) return *top;
    // A device's artwork lies over the screen it frames and lets it show
    // through: a point on a screen that the artwork wholly surrounds picks the
    // screen. Smaller pictures laid over a screen keep their own clicks.
    const auto frame = shapeBounds(*top);
    for (auto below = std::next(top); frame && below != nodes.rend(); ++below) {
        if (!std::dynamic_pointer_cast<FLKVideoContainer>(*below) || !isHitBy(*below, location)) continue;
        const auto screen = shapeBounds(*below);
        if (screen && frame->containsRect(*screen)) return *below;
    }
    return *top;
}

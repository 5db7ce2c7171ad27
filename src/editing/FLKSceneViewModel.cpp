#include "editing/FLKSceneViewModel.h"

#include "core/scene/FLKVideoContainer.h"
#include "core/scene/FLKVideoSprite.h"

FLKSceneViewModel::FLKSceneViewModel(std::shared_ptr<FLKSelectionWidgetViewModel> selectionWidgetViewModel,
                                     std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditingWidgetViewModel,
                                     std::shared_ptr<FLKHoverWidgetViewModel> hoverWidgetViewModel)
    : selectionWidgetViewModel_(std::move(selectionWidgetViewModel)),
      vertexEditingWidgetViewModel_(std::move(vertexEditingWidgetViewModel)),
      hoverWidgetViewModel_(std::move(hoverWidgetViewModel)) {}

void FLKSceneViewModel::clockwiseRotateSelectedSprite() {
    if (!selectionWidgetViewModel_) return;
    const auto& selected = selectionWidgetViewModel_->selectedObjects();
    if (selected.size() != 1) return;
    auto container = std::dynamic_pointer_cast<FLKVideoContainer>(selected.front());
    if (!container || !container->video()) return;
    unsigned orientation = container->video()->videoOrientation() + 1;
    container->video()->setVideoOrientation(orientation > 4 ? 1 : orientation);
}

void FLKSceneViewModel::toggleVertexEditingWidget() {
    if (!vertexEditingWidgetViewModel_) return;
    if (vertexEditingWidgetViewModel_->sprite()) {
        vertexEditingWidgetViewModel_->setSprite(nullptr);
        return;
    }
    auto sprite = selectionWidgetViewModel_ ? selectionWidgetViewModel_->shapeEditableSprite() : nullptr;
    if (!sprite) return;
    vertexEditingWidgetViewModel_->setSprite(sprite);
    if (hoverWidgetViewModel_) hoverWidgetViewModel_->removeHighlight();
}

void FLKSceneViewModel::viewModelDidDragAndDropInteractable(FLKWidgetViewModel*, const FLKObject::Ptr& interactable) {
    if (selectionWidgetViewModel_ && interactable) selectionWidgetViewModel_->selectObject(interactable);
}

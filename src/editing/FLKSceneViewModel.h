#pragma once

#include <memory>

#include "core/scene/FLKObject.h"
#include "editing/FLKCanvasEventObserver.h"
#include "editing/FLKHoverWidgetViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"
#include "editing/FLKWidgetViewModel.h"

// The canvas's own commands on the selection: turning the screen video and
// switching quad-corner editing, and selecting what a file drop created.
// Main thread only.
class FLKSceneViewModel : public FLKCanvasEventObserver {
public:
    FLKSceneViewModel(std::shared_ptr<FLKSelectionWidgetViewModel> selectionWidgetViewModel,
                      std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditingWidgetViewModel,
                      std::shared_ptr<FLKHoverWidgetViewModel> hoverWidgetViewModel);

    // With exactly one video container selected that has a video: orientation
    // 1, 2, 3, 4, then 1 again. Not undoable.
    void clockwiseRotateSelectedSprite();
    // Leaves quad-corner editing, or enters it for the selected shape-editable object.
    void toggleVertexEditingWidget();
    // A file dropped on the canvas became this scene object.
    void viewModelDidDragAndDropInteractable(FLKWidgetViewModel* viewModel, const FLKObject::Ptr& interactable);

    const std::shared_ptr<FLKSelectionWidgetViewModel>& selectionWidgetViewModel() const {
        return selectionWidgetViewModel_;
    }
    const std::shared_ptr<FLKVertexEditingWidgetViewModel>& vertexEditingWidgetViewModel() const {
        return vertexEditingWidgetViewModel_;
    }
    const std::shared_ptr<FLKHoverWidgetViewModel>& hoverWidgetViewModel() const { return hoverWidgetViewModel_; }

private:
    std::shared_ptr<FLKSelectionWidgetViewModel> selectionWidgetViewModel_;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditingWidgetViewModel_;
    std::shared_ptr<FLKHoverWidgetViewModel> hoverWidgetViewModel_;
};

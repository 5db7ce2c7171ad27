#pragma once

#include <memory>
#include <vector>

#include "core/scene/FLKObject.h"
#include "core/scene/FLKShapeEditable.h"
#include "editing/FLKSelection.h"
#include "editing/FLKWidgetViewModel.h"

// Click to select: the topmost interactable object under the pointer becomes
// the selection, a click inside the selection keeps it, a click on empty
// canvas clears it, and Shift adds or removes one object. The selection is
// shared with the selection-editing widget. Main thread only.
class FLKSelectionWidgetViewModel : public FLKWidgetViewModel {
public:
    // The scene is held weakly: a closed document's scene goes away.
    FLKSelectionWidgetViewModel(const std::shared_ptr<FLKObject>& scene, std::shared_ptr<FLKSelection> selection);

    std::string widgetClass() const override { return "FLKSelectionWidget"; }

    const std::shared_ptr<FLKSelection>& selection() const { return selection_; }
    // Makes the object the only selected one.
    void selectObject(const FLKObject::Ptr& object);
    void deselectAll();
    const std::vector<FLKObject::Ptr>& selectedObjects() const { return selection_->selectedObjects(); }
    // The one selected object, when exactly one is selected and its shape can be edited.
    std::shared_ptr<FLKShapeEditable> shapeEditableSprite() const;

    void canvasViewDidReceiveMouseDownEvent(FLKCanvasView* view, const FLKEvent& event) override;

    // The interactable object under the point nearest the viewer, or null.
    static FLKObject::Ptr interactableObjectAtLocation(const std::shared_ptr<FLKObject>& scene, FLKPoint location);

private:
    std::weak_ptr<FLKObject> scene_;
    std::shared_ptr<FLKSelection> selection_;
};

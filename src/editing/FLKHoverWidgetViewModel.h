#pragma once

#include <memory>

#include "core/scene/FLKObject.h"
#include "editing/FLKWidgetViewModel.h"

// Highlights the interactable object under the pointer. Main thread only.
class FLKHoverWidgetViewModel : public FLKWidgetViewModel {
public:
    // The scene is held weakly.
    explicit FLKHoverWidgetViewModel(const std::shared_ptr<FLKObject>& scene) : scene_(scene) {}

    std::string widgetClass() const override { return "FLKHoverWidget"; }

    const FLKObject::Ptr& highlightedObject() const { return highlightedObject_; }
    void removeHighlight() { setHighlightedObject(nullptr); }

    void canvasViewDidReceiveMouseMovedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseExitedEvent(FLKCanvasView* view, const FLKEvent& event) override;

private:
    void setHighlightedObject(FLKObject::Ptr object);

    std::weak_ptr<FLKObject> scene_;
    FLKObject::Ptr highlightedObject_;
};

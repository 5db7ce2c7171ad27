#pragma once

#include <memory>
#include <string>

#include "core/platform/FLKPoint.h"
#include "core/scene/FLKObject.h"
#include "editing/FLKCanvasEventObserver.h"
#include "editing/FLKPropertyObservable.h"

class FLKSelectionWidgetViewModel;
class FLKVertexEditingWidgetViewModel;

// The hint for what the pointer is over on the canvas: what a click or drag
// there would do. Empty while a button is held, with the pointer outside the
// canvas, or over nothing to act on. Views bind to "tooltip" and to
// "location", told when the same hint moves with the pointer. Registered as
// the newest canvas observer and never swallows, so it sees every event;
// selection and corner-editing changes (menu items too) update it in place.
// Main thread only.
class FLKTooltipsDispatcher : public FLKCanvasEventObserver, public FLKPropertyObservable {
public:
    static constexpr const char* kSelect = "Click to select";
    static constexpr const char* kMoveOrResize = "Drag to move, drag a handle to resize";
    static constexpr const char* kDropRecording = "Drop a screen recording here";
    static constexpr const char* kMoveCorner = "Drag to move this corner";
    static constexpr const char* kEditCorners = "Drag a corner onto the screen's corner; Esc to finish";

    // The scene is held weakly.
    FLKTooltipsDispatcher(const std::shared_ptr<FLKObject>& scene,
                          std::shared_ptr<FLKSelectionWidgetViewModel> selecting,
                          std::shared_ptr<FLKVertexEditingWidgetViewModel> cornering);
    ~FLKTooltipsDispatcher() override;
    FLKTooltipsDispatcher(const FLKTooltipsDispatcher&) = delete;
    FLKTooltipsDispatcher& operator=(const FLKTooltipsDispatcher&) = delete;

    const std::string& tooltip() const { return tooltip_; }
    // Where the pointer was when the tooltip was chosen, in scene points.
    FLKPoint location() const { return location_; }

    void canvasViewDidReceiveMouseMovedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseEnteredEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseExitedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseDownEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseUpEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveScrollWheelEvent(FLKCanvasView* view, const FLKEvent& event) override;

private:
    void pointerAt(FLKPoint location);
    void refresh();
    std::string tooltipAt(FLKPoint location) const;
    void setTooltip(std::string tooltip);

    std::weak_ptr<FLKObject> scene_;
    std::shared_ptr<FLKSelectionWidgetViewModel> selecting_;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> cornering_;
    FLKPropertyObservable::ObserverToken selectingToken_ = 0;
    FLKPropertyObservable::ObserverToken corneringToken_ = 0;
    bool inside_ = false;
    bool pressed_ = false;
    FLKPoint location_;
    std::string tooltip_;
};

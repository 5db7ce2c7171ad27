#pragma once

#include <filesystem>

#include "editing/FLKEvent.h"

// The canvas widget of the desktop shell; only passed through here.
class FLKCanvasView;

// Receives the canvas's input events through the actions notifier. Every
// handler does nothing by default, so an observer overrides only what it
// handles. Main thread only.
class FLKCanvasEventObserver {
public:
    virtual ~FLKCanvasEventObserver() = default;

    // Asked before the handler runs: true hides the event from observers
    // registered before this one.
    virtual bool swallowsEvent(const FLKEvent&, FLKCanvasView*) { return false; }

    virtual void canvasViewDidReceiveMouseDownEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveMouseUpEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveRightMouseDraggedEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveMouseMovedEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveMouseEnteredEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveMouseExitedEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveKeyDownEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveKeyUpEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveFlagsChangedEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveMagnifyEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveTouchesBeganWithEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveTouchesEndedWithEvent(FLKCanvasView*, const FLKEvent&) {}
    virtual void canvasViewDidReceiveScrollWheelEvent(FLKCanvasView*, const FLKEvent&) {}
    // Escape.
    virtual void canvasViewDidReceiveCancelOperation(FLKCanvasView*) {}
    virtual bool canvasViewShouldBeginDragAndDropForFileAtPath(FLKCanvasView*, const std::filesystem::path&) {
        return false;
    }
    virtual void canvasViewDidEndDragAndDropForFileAtURL(FLKCanvasView*, const std::filesystem::path&) {}
};

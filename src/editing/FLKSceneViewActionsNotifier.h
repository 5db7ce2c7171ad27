#pragma once

#include <memory>
#include <vector>

#include "editing/FLKCanvasEventObserver.h"

// The canvas's input delegate: fans each event out to the widget view models
// and the scene view model, newest observer first. An observer that swallows
// an event still receives it; older observers then do not. Main thread only.
class FLKSceneViewActionsNotifier : public FLKCanvasEventObserver {
public:
    using Observer = std::shared_ptr<FLKCanvasEventObserver>;

    // Held weakly; adding one twice keeps one entry.
    void addObserver(const Observer& observer);
    void removeObserver(const Observer& observer);
    // The live observers, oldest first; gone ones are dropped on every read.
    std::vector<Observer> observers();
    std::vector<Observer> reverseObservers();

    // Routes an event to the handler of its type.
    void canvasViewDidReceiveEvent(FLKCanvasView* view, const FLKEvent& event);

    void canvasViewDidReceiveMouseDownEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseUpEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveRightMouseDraggedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseMovedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseEnteredEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMouseExitedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveKeyDownEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveKeyUpEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveFlagsChangedEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveMagnifyEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveTouchesBeganWithEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveTouchesEndedWithEvent(FLKCanvasView* view, const FLKEvent& event) override;
    void canvasViewDidReceiveScrollWheelEvent(FLKCanvasView* view, const FLKEvent& event) override;
    // Goes to every observer; nobody swallows Escape.
    void canvasViewDidReceiveCancelOperation(FLKCanvasView* view) override;
    // True as soon as one observer, newest first, accepts the file.
    bool canvasViewShouldBeginDragAndDropForFileAtPath(FLKCanvasView* view, const std::filesystem::path& path) override;
    void canvasViewDidEndDragAndDropForFileAtURL(FLKCanvasView* view, const std::filesystem::path& url) override;

private:
    using Handler = void (FLKCanvasEventObserver::*)(FLKCanvasView*, const FLKEvent&);
    void fanOut(FLKCanvasView* view, const FLKEvent& event, Handler handler);

    std::vector<std::weak_ptr<FLKCanvasEventObserver>> observers_;
};

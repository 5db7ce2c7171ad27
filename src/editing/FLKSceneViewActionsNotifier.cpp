#include "editing/FLKSceneViewActionsNotifier.h"

#include <algorithm>

void FLKSceneViewActionsNotifier::addObserver(const Observer& observer) {
    if (!observer) return;
    auto live = observers();
    if (std::find(live.begin(), live.end(), observer) != live.end()) return;
    observers_.push_back(observer);
}

void FLKSceneViewActionsNotifier::removeObserver(const Observer& observer) {
    std::erase_if(observers_, [&](const auto& weak) {
        auto strong = weak.lock();
        return !strong || strong == observer;
    });
}

std::vector<FLKSceneViewActionsNotifier::Observer> FLKSceneViewActionsNotifier::observers() {
    std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
    std::vector<Observer> live;
    for (auto& weak : observers_) {
        if (auto strong = weak.lock()) live.push_back(std::move(strong));
    }
    return live;
}

std::vector<FLKSceneViewActionsNotifier::Observer> FLKSceneViewActionsNotifier::reverseObservers() {
    auto live = observers();
    std::reverse(live.begin(), live.end());
    return live;
}

void FLKSceneViewActionsNotifier::fanOut(FLKCanvasView* view, const FLKEvent& event, Handler handler) {
    // A handler may add or remove observers; the snapshot keeps this pass stable.
    for (auto& observer : reverseObservers()) {
        bool swallows = observer->swallowsEvent(event, view);
        (observer.get()->*handler)(view, event);
        if (swallows) break;
    }
}

void FLKSceneViewActionsNotifier::canvasViewDidReceiveEvent(FLKCanvasView* view, const FLKEvent& event) {
    switch (event.type) {
        case FLKEventType::mouseDown: return canvasViewDidReceiveMouseDownEvent(view, event);
        case FLKEventType::mouseUp: return canvasViewDidReceiveMouseUpEvent(view, event);
        case FLKEventType::mouseDragged: return canvasViewDidReceiveMouseDraggedEvent(view, event);
        case FLKEventType::rightMouseDragged: return canvasViewDidReceiveRightMouseDraggedEvent(view, event);
        case FLKEventType::mouseMoved: return canvasViewDidReceiveMouseMovedEvent(view, event);
        case FLKEventType::mouseEntered: return canvasViewDidReceiveMouseEnteredEvent(view, event);
        case FLKEventType::mouseExited: return canvasViewDidReceiveMouseExitedEvent(view, event);
        case FLKEventType::keyDown: return canvasViewDidReceiveKeyDownEvent(view, event);
        case FLKEventType::keyUp: return canvasViewDidReceiveKeyUpEvent(view, event);
        case FLKEventType::flagsChanged: return canvasViewDidReceiveFlagsChangedEvent(view, event);
        case FLKEventType::magnify: return canvasViewDidReceiveMagnifyEvent(view, event);
        case FLKEventType::touchesBegan: return canvasViewDidReceiveTouchesBeganWithEvent(view, event);
        case FLKEventType::touchesEnded: return canvasViewDidReceiveTouchesEndedWithEvent(view, event);
        case FLKEventType::scrollWheel: return canvasViewDidReceiveScrollWheelEvent(view, event);
    }
}

void FLKSceneViewActionsNotifier::canvasViewDidReceiveMouseDownEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMouseDownEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveMouseUpEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMouseUpEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveMouseDraggedEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMouseDraggedEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveRightMouseDraggedEvent(FLKCanvasView* view,
                                                                             const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveRightMouseDraggedEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveMouseMovedEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMouseMovedEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveMouseEnteredEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMouseEnteredEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveMouseExitedEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMouseExitedEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveKeyDownEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveKeyDownEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveKeyUpEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveKeyUpEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveFlagsChangedEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveFlagsChangedEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveMagnifyEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveMagnifyEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveTouchesBeganWithEvent(FLKCanvasView* view,
                                                                            const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveTouchesBeganWithEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveTouchesEndedWithEvent(FLKCanvasView* view,
                                                                            const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveTouchesEndedWithEvent);
}
void FLKSceneViewActionsNotifier::canvasViewDidReceiveScrollWheelEvent(FLKCanvasView* view, const FLKEvent& event) {
    fanOut(view, event, &FLKCanvasEventObserver::canvasViewDidReceiveScrollWheelEvent);
}

void FLKSceneViewActionsNotifier::canvasViewDidReceiveCancelOperation(FLKCanvasView* view) {
    for (auto& observer : reverseObservers()) observer->canvasViewDidReceiveCancelOperation(view);
}

bool FLKSceneViewActionsNotifier::canvasViewShouldBeginDragAndDropForFileAtPath(FLKCanvasView* view,
                                                                                const std::filesystem::path& path) {
    for (auto& observer : reverseObservers()) {
        if (observer->canvasViewShouldBeginDragAndDropForFileAtPath(view, path)) return true;
    }
    return false;
}

void FLKSceneViewActionsNotifier::canvasViewDidEndDragAndDropForFileAtURL(FLKCanvasView* view,
                                                                          const std::filesystem::path& url) {
    for (auto& observer : reverseObservers()) observer->canvasViewDidEndDragAndDropForFileAtURL(view, url);
}

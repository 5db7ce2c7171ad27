#pragma once

#include <memory>

class FLKCursorManager;
class FLKHoverWidgetViewModel;
class FLKMainQueue;
class FLKScene;
class FLKSceneViewActionsNotifier;
class FLKSceneViewModel;
class FLKSelectionEditingWidgetViewModel;
class FLKSelectionWidgetViewModel;
class FLKTooltipsDispatcher;
class FLKVertexEditingWidgetViewModel;

// The canvas's view models for one loaded scene and the notifier that fans
// the canvas's events out to them, newest observer first: the tooltips
// dispatcher (which sees every event), the quad-corner editor, the selection frame (sharing click selection's selection), click
// selection, hovering, then the scene view model. Made again for every
// scene that is loaded. Main thread only.
class FLKCanvasViewModels {
public:
    // The selection frame's scroll timer runs on `queue` (the main queue when null).
    FLKCanvasViewModels(const std::shared_ptr<FLKScene>& scene, std::shared_ptr<FLKCursorManager> cursors,
                        std::shared_ptr<FLKMainQueue> queue = nullptr);
    ~FLKCanvasViewModels();
    FLKCanvasViewModels(const FLKCanvasViewModels&) = delete;
    FLKCanvasViewModels& operator=(const FLKCanvasViewModels&) = delete;

    FLKSceneViewActionsNotifier& notifier() const { return *notifier_; }
    const std::shared_ptr<FLKSelectionWidgetViewModel>& selecting() const { return selecting_; }
    const std::shared_ptr<FLKSelectionEditingWidgetViewModel>& framing() const { return framing_; }
    const std::shared_ptr<FLKVertexEditingWidgetViewModel>& cornering() const { return cornering_; }
    const std::shared_ptr<FLKHoverWidgetViewModel>& hovering() const { return hovering_; }
    const std::shared_ptr<FLKSceneViewModel>& sceneViewModel() const { return sceneViewModel_; }
    const std::shared_ptr<FLKTooltipsDispatcher>& tooltips() const { return tooltips_; }

private:
    // The notifier holds its observers weakly; these keep them.
    std::unique_ptr<FLKSceneViewActionsNotifier> notifier_;
    std::shared_ptr<FLKSelectionWidgetViewModel> selecting_;
    std::shared_ptr<FLKSelectionEditingWidgetViewModel> framing_;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> cornering_;
    std::shared_ptr<FLKHoverWidgetViewModel> hovering_;
    std::shared_ptr<FLKSceneViewModel> sceneViewModel_;
    std::shared_ptr<FLKTooltipsDispatcher> tooltips_;
};

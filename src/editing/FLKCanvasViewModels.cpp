#include "editing/FLKCanvasViewModels.h"

#include "core/platform/FLKMainQueue.h"
#include "core/scene/FLKScene.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKHoverWidgetViewModel.h"
#include "editing/FLKSceneViewActionsNotifier.h"
#include "editing/FLKSceneViewModel.h"
#include "editing/FLKSelectionEditingWidgetViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"
#include "editing/FLKTooltipsDispatcher.h"
#include "editing/FLKVertexEditingWidgetViewModel.h"

FLKCanvasViewModels::FLKCanvasViewModels(const std::shared_ptr<FLKScene>& scene,
                                         std::shared_ptr<FLKCursorManager> cursors,
                                         std::shared_ptr<FLKMainQueue> queue)
    : notifier_(std::make_unique<FLKSceneViewActionsNotifier>()),
      selecting_(std::make_shared<FLKSelectionWidgetViewModel>(scene, nullptr)),
      framing_(std::make_shared<FLKSelectionEditingWidgetViewModel>(cursors, std::move(queue))),
      cornering_(std::make_shared<FLKVertexEditingWidgetViewModel>(cursors)),
      hovering_(std::make_shared<FLKHoverWidgetViewModel>(scene)),
      sceneViewModel_(std::make_shared<FLKSceneViewModel>(selecting_, cornering_, hovering_)),
      tooltips_(std::make_shared<FLKTooltipsDispatcher>(scene, selecting_, cornering_)) {
    framing_->setSelection(selecting_->selection());
    notifier_->addObserver(sceneViewModel_);
    notifier_->addObserver(hovering_);
    notifier_->addObserver(selecting_);
    notifier_->addObserver(framing_);
    notifier_->addObserver(cornering_);
    notifier_->addObserver(tooltips_);
}

FLKCanvasViewModels::~FLKCanvasViewModels() = default;

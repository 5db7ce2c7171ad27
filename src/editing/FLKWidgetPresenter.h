#pragma once

#include <memory>

#include "core/model/FLKSceneModifierWidgetPresenter.h"
#include "core/platform/FLKNotificationCenter.h"
#include "editing/FLKWidgetHostViewController.h"
#include "editing/FLKWidgetView.h"
#include "editing/FLKWidgetViewModel.h"

// Puts widgets for view models on the canvas and redraws them, also after
// undo and redo so the handles follow the restored geometry. Main thread only.
class FLKWidgetPresenter : public FLKSceneModifierWidgetPresenter {
public:
    static std::shared_ptr<FLKWidgetPresenter> presenterWithViewController(
        const std::shared_ptr<FLKWidgetHostViewController>& viewController);
    explicit FLKWidgetPresenter(const std::shared_ptr<FLKWidgetHostViewController>& viewController);
    FLKWidgetPresenter(const FLKWidgetPresenter&) = delete;
    FLKWidgetPresenter& operator=(const FLKWidgetPresenter&) = delete;

    // Replaces any widget already shown for the view model.
    void presentWidgetForViewModel(const std::shared_ptr<FLKWidgetViewModel>& viewModel);
    void dismissWidgetForViewModel(const std::shared_ptr<FLKWidgetViewModel>& viewModel);
    void updateWidget() override;

    std::shared_ptr<FLKWidgetHostViewController> viewController() const { return viewController_.lock(); }
    const std::shared_ptr<FLKWidgetView>& widgetView() const { return widgetView_; }

private:
    void addWidgetView();
    void addObservers();

    std::weak_ptr<FLKWidgetHostViewController> viewController_;
    std::shared_ptr<FLKWidgetView> widgetView_;
    FLKObservation undoObservation_;
    FLKObservation redoObservation_;
};

#include "editing/FLKWidgetPresenter.h"

#include "editing/FLKActionPipeline.h"

std::shared_ptr<FLKWidgetPresenter> FLKWidgetPresenter::presenterWithViewController(
    const std::shared_ptr<FLKWidgetHostViewController>& viewController) {
    return std::make_shared<FLKWidgetPresenter>(viewController);
}

FLKWidgetPresenter::FLKWidgetPresenter(const std::shared_ptr<FLKWidgetHostViewController>& viewController)
    : viewController_(viewController) {
    addWidgetView();
    addObservers();
}

void FLKWidgetPresenter::addWidgetView() {
    if (auto controller = viewController_.lock()) widgetView_ = controller->addWidgetView();
}

void FLKWidgetPresenter::addObservers() {
    auto& center = FLKNotificationCenter::defaultCenter();
    auto redraw = [this](const FLKNotification&) { updateWidget(); };
    undoObservation_ = FLKObservation(center, center.addObserver(FLKActionPipelineDidUndoNotification, nullptr, redraw));
    redoObservation_ = FLKObservation(center, center.addObserver(FLKActionPipelineDidRedoNotification, nullptr, redraw));
}

void FLKWidgetPresenter::presentWidgetForViewModel(const std::shared_ptr<FLKWidgetViewModel>& viewModel) {
    if (!widgetView_ || !viewModel) return;
    dismissWidgetForViewModel(viewModel);
    auto widget = widgetView_->makeWidget(viewModel->widgetClass(), viewModel);
    if (!widget) return;
    widgetView_->addWidget(widget);
    // The view model outlives neither the overlay nor this presenter's widgets.
    std::weak_ptr<FLKWidgetView> view = widgetView_;
    viewModel->setWidgetUpdater([view] {
        if (auto strong = view.lock()) strong->setNeedsDisplay();
    });
}

void FLKWidgetPresenter::dismissWidgetForViewModel(const std::shared_ptr<FLKWidgetViewModel>& viewModel) {
    if (!widgetView_ || !viewModel) return;
    if (auto widget = widgetView_->widgetForViewModel(*viewModel)) widgetView_->removeWidget(widget);
}

void FLKWidgetPresenter::updateWidget() {
    if (widgetView_) widgetView_->setNeedsDisplay();
}

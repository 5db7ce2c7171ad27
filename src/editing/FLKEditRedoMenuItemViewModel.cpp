#include "editing/FLKEditRedoMenuItemViewModel.h"

#include "editing/FLKActionPipeline.h"

FLKEditRedoMenuItemViewModel::FLKEditRedoMenuItemViewModel() {
    setTitle("Redo");
    auto& center = FLKNotificationCenter::defaultCenter();
    pipelineObservation_ = FLKObservation(
        center, center.addObserver(FLKActionPipelineDidUpdateNotification, nullptr,
                                   [this](const FLKNotification&) { checkRedo(); }));
    checkRedo();
}

void FLKEditRedoMenuItemViewModel::checkRedo() { setEnabled(FLKActionPipeline::sharedPipeline().canRedo()); }

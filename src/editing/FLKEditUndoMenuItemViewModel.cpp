#include "editing/FLKEditUndoMenuItemViewModel.h"

#include "editing/FLKActionPipeline.h"

FLKEditUndoMenuItemViewModel::FLKEditUndoMenuItemViewModel() {
    setTitle("Undo");
    auto& center = FLKNotificationCenter::defaultCenter();
    pipelineObservation_ = FLKObservation(
        center, center.addObserver(FLKActionPipelineDidUpdateNotification, nullptr,
                                   [this](const FLKNotification&) { checkUndo(); }));
    checkUndo();
}

void FLKEditUndoMenuItemViewModel::checkUndo() { setEnabled(FLKActionPipeline::sharedPipeline().canUndo()); }

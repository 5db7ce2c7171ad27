#pragma once

#include "core/platform/FLKNotificationCenter.h"
#include "editing/FLKMenuItemViewModel.h"

// Edit > Undo: titled "Undo", enabled while the shared pipeline can undo.
class FLKEditUndoMenuItemViewModel : public FLKMenuItemViewModel {
public:
    FLKEditUndoMenuItemViewModel();
    void checkUndo();

private:
    FLKObservation pipelineObservation_;
};

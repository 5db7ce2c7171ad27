#pragma once

#include "core/platform/FLKNotificationCenter.h"
#include "editing/FLKMenuItemViewModel.h"

// Edit > Redo: titled "Redo", enabled while the shared pipeline can redo.
class FLKEditRedoMenuItemViewModel : public FLKMenuItemViewModel {
public:
    FLKEditRedoMenuItemViewModel();
    void checkRedo();

private:
    FLKObservation pipelineObservation_;
};

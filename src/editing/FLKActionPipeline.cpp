#include "editing/FLKActionPipeline.h"

#include <algorithm>

#include "core/platform/FLKNotificationCenter.h"
#include "core/platform/FLKUserFeedback.h"

FLKActionPipeline& FLKActionPipeline::sharedPipeline() {
    static FLKActionPipeline* const shared = new FLKActionPipeline();
    return *shared;
}

std::shared_ptr<FLKActionResult> FLKActionPipeline::execute(const std::shared_ptr<FLKAction>& action) {
    if (!action) return nullptr;
    auto result = action->execute();
    if (!result) return nullptr;
    redoQueue_.clear();
    undoQueue_.push_back(action);
    notifyPipelineDidUpdate();
    return result;
}

std::shared_ptr<FLKActionResult> FLKActionPipeline::undo() {
    if (undoQueue_.empty()) {
        FLKUserFeedback::shared().beep();
        return nullptr;
    }
    auto action = undoQueue_.back();
    auto result = action->undo();
    std::erase(undoQueue_, action);
    redoQueue_.push_back(action);
    FLKNotificationCenter::defaultCenter().post(FLKActionPipelineDidUndoNotification, action.get());
    notifyPipelineDidUpdate();
    return result;
}

std::shared_ptr<FLKActionResult> FLKActionPipeline::redo() {
    if (redoQueue_.empty()) {
        FLKUserFeedback::shared().beep();
        return nullptr;
    }
    auto action = redoQueue_.back();
    // The action moves back even when it reports no change.
    auto result = action->execute();
    undoQueue_.push_back(action);
    std::erase(redoQueue_, action);
    FLKNotificationCenter::defaultCenter().post(FLKActionPipelineDidRedoNotification, action.get());
    notifyPipelineDidUpdate();
    return result;
}

void FLKActionPipeline::clear() {
    undoQueue_.clear();
    redoQueue_.clear();
    notifyPipelineDidUpdate();
}

void FLKActionPipeline::notifyPipelineDidUpdate() {
    FLKNotificationCenter::defaultCenter().post(FLKActionPipelineDidUpdateNotification, this);
}

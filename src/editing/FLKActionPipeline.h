#pragma once

#include <memory>
#include <vector>

#include "editing/FLKAction.h"
#include "editing/FLKActionResult.h"

inline constexpr const char* FLKActionPipelineDidUpdateNotification = "FLKActionPipelineDidUpdateNotification";
inline constexpr const char* FLKActionPipelineDidUndoNotification = "FLKActionPipelineDidUndoNotification";
inline constexpr const char* FLKActionPipelineDidRedoNotification = "FLKActionPipelineDidRedoNotification";

// The process-wide undo history. Main thread only: every client is a menu
// action, an input event or a main-loop timer, so it takes no lock.
// Notifications go to the default centre: the undo (redo) notice carries the
// action as object and comes before the update notice, which carries the
// pipeline.
class FLKActionPipeline {
public:
    static FLKActionPipeline& sharedPipeline();

    FLKActionPipeline() = default;
    FLKActionPipeline(const FLKActionPipeline&) = delete;
    FLKActionPipeline& operator=(const FLKActionPipeline&) = delete;

    // Runs the action and records it when it changed anything; a new record
    // drops the redo history.
    std::shared_ptr<FLKActionResult> execute(const std::shared_ptr<FLKAction>& action);
    // Beep and nullptr when there is nothing to undo (redo).
    std::shared_ptr<FLKActionResult> undo();
    std::shared_ptr<FLKActionResult> redo();
    // Empties both stacks and always posts the update notice.
    void clear();

    bool canUndo() const { return !undoQueue_.empty(); }
    bool canRedo() const { return !redoQueue_.empty(); }
    void notifyPipelineDidUpdate();

    // Oldest first; the last element is the next to undo (redo).
    const std::vector<std::shared_ptr<FLKAction>>& undoQueue() const { return undoQueue_; }
    const std::vector<std::shared_ptr<FLKAction>>& redoQueue() const { return redoQueue_; }

private:
    std::vector<std::shared_ptr<FLKAction>> undoQueue_;
    std::vector<std::shared_ptr<FLKAction>> redoQueue_;
};

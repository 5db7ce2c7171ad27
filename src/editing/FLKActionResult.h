#pragma once

#include <memory>

class FLKAction;

// What an action hands back: the action itself and the model object it
// changed (a selection, a sprite or a track). Informational only.
class FLKActionResult {
public:
    static std::shared_ptr<FLKActionResult> resultWithAction(std::shared_ptr<FLKAction> action,
                                                             std::shared_ptr<void> object);

    FLKActionResult(std::shared_ptr<FLKAction> action, std::shared_ptr<void> object)
        : action_(std::move(action)), object_(std::move(object)) {}

    const std::shared_ptr<FLKAction>& action() const { return action_; }
    const std::shared_ptr<void>& object() const { return object_; }

private:
    std::shared_ptr<FLKAction> action_;
    std::shared_ptr<void> object_;
};

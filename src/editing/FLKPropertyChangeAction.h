#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "editing/FLKAction.h"

// An undoable change of one property of a model object that an inspector
// changed live: the values before and after, written back through `apply`.
// `Value` must compare with ==.
template <class Value>
class FLKPropertyChangeAction : public FLKAction {
public:
    using Apply = std::function<void(const Value&)>;

    FLKPropertyChangeAction(std::shared_ptr<void> object, Apply apply, Value initial, Value final)
        : object_(std::move(object)), apply_(std::move(apply)), initial_(std::move(initial)), final_(std::move(final)) {}

    // Nothing to record when the value did not change. The first execution
    // finds the final value already live; a redo writes it.
    std::shared_ptr<FLKActionResult> execute() override {
        if (initial_ == final_) return nullptr;
        if (didUndo_) {
            didUndo_ = false;
            apply_(final_);
        }
        return FLKActionResult::resultWithAction(shared_from_this(), object_);
    }

    std::shared_ptr<FLKActionResult> undo() override {
        didUndo_ = true;
        apply_(initial_);
        return FLKActionResult::resultWithAction(shared_from_this(), object_);
    }

private:
    std::shared_ptr<void> object_;
    Apply apply_;
    Value initial_;
    Value final_;
    bool didUndo_ = false;
};

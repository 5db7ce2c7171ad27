#pragma once

#include <memory>

#include "editing/FLKActionResult.h"

// An undoable edit. The gesture changes the model live; the action only holds
// the state before and after, and writes one of them back. Subclasses snapshot
// the initial state when made and the final state when finalised.
class FLKAction : public std::enable_shared_from_this<FLKAction> {
public:
    virtual ~FLKAction() = default;

    // Applies the final state. nullptr when there is nothing to record (the
    // final state equals the initial one).
    virtual std::shared_ptr<FLKActionResult> execute() { return nullptr; }
    // Writes the initial state back.
    virtual std::shared_ptr<FLKActionResult> undo() { return nullptr; }
};

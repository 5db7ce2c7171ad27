#pragma once

#include <memory>
#include <vector>

#include "core/scene/FLKObject.h"
#include "editing/FLKAction.h"
#include "editing/FLKSelection.h"

// An undoable change of the shapes of the selected objects, held as deep
// copies of the objects before and after. Only shapes are written back,
// matched to the live objects by identifier.
class FLKSelectionTransformingAction : public FLKAction {
public:
    static std::shared_ptr<FLKSelectionTransformingAction> actionWithSelection(const FLKSelection& selection);
    explicit FLKSelectionTransformingAction(const FLKSelection& selection);

    // Takes the final snapshot.
    void finalize();

    // Nothing to record when no shape changed. The first execution finds the
    // final state already live and applies nothing; a redo applies it.
    std::shared_ptr<FLKActionResult> execute() override;
    std::shared_ptr<FLKActionResult> undo() override;

    const std::shared_ptr<FLKSelection>& selection() const { return selection_; }
    const std::vector<FLKObject::Ptr>& initialSelectedObjects() const { return initialSelectedObjects_; }
    const std::vector<FLKObject::Ptr>& finalSelectedObjects() const { return finalSelectedObjects_; }
    bool didUndo() const { return didUndo_; }

private:
    std::vector<FLKObject::Ptr> snapshot() const;
    void applySnapshot(const std::vector<FLKObject::Ptr>& snapshot);
    static bool snapshotsEqual(const std::vector<FLKObject::Ptr>& a, const std::vector<FLKObject::Ptr>& b);

    std::shared_ptr<FLKSelection> selection_;
    std::vector<FLKObject::Ptr> initialSelectedObjects_;
    std::vector<FLKObject::Ptr> finalSelectedObjects_;
    bool didUndo_ = false;
};

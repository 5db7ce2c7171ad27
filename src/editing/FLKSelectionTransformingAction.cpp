#include "editing/FLKSelectionTransformingAction.h"

#include "core/scene/FLKShapeEditable.h"

std::shared_ptr<FLKSelectionTransformingAction> FLKSelectionTransformingAction::actionWithSelection(
    const FLKSelection& selection) {
    return std::make_shared<FLKSelectionTransformingAction>(selection);
}

FLKSelectionTransformingAction::FLKSelectionTransformingAction(const FLKSelection& selection)
    : selection_(selection.copy()), initialSelectedObjects_(snapshot()) {}

void FLKSelectionTransformingAction::finalize() { finalSelectedObjects_ = snapshot(); }

std::shared_ptr<FLKActionResult> FLKSelectionTransformingAction::execute() {
    if (snapshotsEqual(initialSelectedObjects_, finalSelectedObjects_)) return nullptr;
    if (didUndo_) {
        didUndo_ = false;
        applySnapshot(finalSelectedObjects_);
    }
    return FLKActionResult::resultWithAction(shared_from_this(), selection_);
}

std::shared_ptr<FLKActionResult> FLKSelectionTransformingAction::undo() {
    didUndo_ = true;
    applySnapshot(initialSelectedObjects_);
    return FLKActionResult::resultWithAction(shared_from_this(), selection_);
}

std::vector<FLKObject::Ptr> FLKSelectionTransformingAction::snapshot() const {
    std::vector<FLKObject::Ptr> copies;
    for (auto& object : selection_->selectedObjects()) copies.push_back(object->copy());
    return copies;
}

void FLKSelectionTransformingAction::applySnapshot(const std::vector<FLKObject::Ptr>& snapshot) {
    for (auto& saved : snapshot) {
        auto savedEditable = std::dynamic_pointer_cast<FLKShapeEditable>(saved);
        if (!savedEditable || !saved->identifier()) continue;
        for (auto& live : selection_->selectedObjects()) {
            if (live->identifier() != saved->identifier()) continue;
            if (auto liveEditable = std::dynamic_pointer_cast<FLKShapeEditable>(live)) {
                liveEditable->setShape(savedEditable->shape());
            }
            break;
        }
    }
}

bool FLKSelectionTransformingAction::snapshotsEqual(const std::vector<FLKObject::Ptr>& a,
                                                    const std::vector<FLKObject::Ptr>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (!a[i]->isEqual(*b[i])) return false;
    }
    return true;
}

#include "editing/FLKShapeEditingAction.h"

namespace {
bool shapesEqual(const std::shared_ptr<FLKShape>& a, const std::shared_ptr<FLKShape>& b) {
    if (!a || !b) return !a && !b;
    return a->isEqual(*b);
}
}  // namespace

std::shared_ptr<FLKShapeEditingAction> FLKShapeEditingAction::actionWithSprite(
    std::shared_ptr<FLKShapeEditable> sprite) {
    return std::make_shared<FLKShapeEditingAction>(std::move(sprite));
}

FLKShapeEditingAction::FLKShapeEditingAction(std::shared_ptr<FLKShapeEditable> sprite)
    : sprite_(std::move(sprite)), initialShape_(sprite_ ? sprite_->shape() : nullptr) {}

void FLKShapeEditingAction::finalizeWithShape(std::shared_ptr<FLKShape> shape) { finalShape_ = std::move(shape); }

std::shared_ptr<FLKActionResult> FLKShapeEditingAction::execute() {
    if (!sprite_ || shapesEqual(initialShape_, finalShape_)) return nullptr;
    sprite_->setShape(finalShape_);
    return FLKActionResult::resultWithAction(shared_from_this(), sprite_);
}

std::shared_ptr<FLKActionResult> FLKShapeEditingAction::undo() {
    if (!sprite_) return nullptr;
    sprite_->setShape(initialShape_);
    return FLKActionResult::resultWithAction(shared_from_this(), sprite_);
}

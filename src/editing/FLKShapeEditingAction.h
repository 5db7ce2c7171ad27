#pragma once

#include <memory>

#include "core/scene/FLKShape.h"
#include "core/scene/FLKShapeEditable.h"
#include "editing/FLKAction.h"

// An undoable change of one sprite's shape (dragging its quad's corners).
// Shapes are values, so the two states are kept without copying.
class FLKShapeEditingAction : public FLKAction {
public:
    static std::shared_ptr<FLKShapeEditingAction> actionWithSprite(std::shared_ptr<FLKShapeEditable> sprite);
    explicit FLKShapeEditingAction(std::shared_ptr<FLKShapeEditable> sprite);

    void finalizeWithShape(std::shared_ptr<FLKShape> shape);

    std::shared_ptr<FLKActionResult> execute() override;
    std::shared_ptr<FLKActionResult> undo() override;

    const std::shared_ptr<FLKShapeEditable>& sprite() const { return sprite_; }
    const std::shared_ptr<FLKShape>& initialShape() const { return initialShape_; }
    const std::shared_ptr<FLKShape>& finalShape() const { return finalShape_; }

private:
    std::shared_ptr<FLKShapeEditable> sprite_;
    std::shared_ptr<FLKShape> initialShape_;
    std::shared_ptr<FLKShape> finalShape_;
};

#pragma once

#include <memory>

class FLKSceneView;
class FLKSelectionEditingWidgetViewModel;
class FLKVertexEditingWidgetViewModel;
class QPainter;

// The on-canvas widgets painted over the rendered scene: the selection frame
// with its eight handles, and the corner markers while quad corners are
// edited. Drawn from the view models' state at paint time, so undo, redo and
// drags show without any bookkeeping here.
class FLKCanvasOverlay {
public:
    FLKCanvasOverlay(std::shared_ptr<FLKSelectionEditingWidgetViewModel> selectionEditing,
                     std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditing);

    void paint(QPainter& painter, const FLKSceneView& view) const;

private:
    void paintSelectionFrame(QPainter& painter, const FLKSceneView& view) const;
    void paintCornerMarkers(QPainter& painter, const FLKSceneView& view) const;

    std::shared_ptr<FLKSelectionEditingWidgetViewModel> selectionEditing_;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditing_;
};

#pragma once

#include <memory>

class FLKCanvasViewModels;
class FLKHoverWidgetViewModel;
class FLKSceneView;
class FLKSelectionEditingWidgetViewModel;
class FLKVertexEditingWidgetViewModel;
class QPainter;

// The on-canvas widgets painted over the rendered scene: the outline of the
// object under the pointer, the selection frame with its eight handles, and
// the corner markers while quad corners are edited (the one under the
// pointer or in the hand larger and white). Drawn from the view models'
// state at paint time, so undo, redo and drags show without any bookkeeping
// here. Lines and handles sit on whole device pixels: crisp at any ratio.
class FLKCanvasOverlay {
public:
    explicit FLKCanvasOverlay(const FLKCanvasViewModels& models);

    void paint(QPainter& painter, const FLKSceneView& view) const;

private:
    void paintHoverHighlight(QPainter& painter, const FLKSceneView& view) const;
    void paintSelectionFrame(QPainter& painter, const FLKSceneView& view) const;
    void paintCornerMarkers(QPainter& painter, const FLKSceneView& view) const;

    std::shared_ptr<FLKSelectionEditingWidgetViewModel> selectionEditing_;
    std::shared_ptr<FLKVertexEditingWidgetViewModel> vertexEditing_;
    std::shared_ptr<FLKHoverWidgetViewModel> hovering_;
};

#pragma once

#include <QMainWindow>

#include <memory>

#include "core/platform/FLKNotificationCenter.h"

class FLKCanvasViewModels;
class FLKRenderLoopController;
class FLKSceneView;
class QAction;

// The one main window: the canvas, and the Edit menu bound to the action
// pipeline. Shows the first built-in template at start and every scene the
// scene loader loads later, with a fresh undo history each time; the loaded
// timeline becomes the master timeline, feeds the scene's video and starts
// playing.
class FLKMainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit FLKMainWindow(QWidget* parent = nullptr);
    ~FLKMainWindow() override;

    FLKSceneView* sceneView() const { return sceneView_; }
    // The canvas's view models of the scene shown; null until one is.
    FLKCanvasViewModels* canvasViewModels() const { return canvasViewModels_.get(); }
    QAction* undoAction() const { return undoAction_; }
    QAction* redoAction() const { return redoAction_; }
    QAction* editVerticesAction() const { return editVerticesAction_; }
    FLKRenderLoopController* renderLoop() const { return renderLoop_; }

    // Loads the first template unless a scene is loaded already, then shows it.
    void showScene();

private:
    void buildEditMenu();
    void sceneDidUpdate();

    FLKSceneView* sceneView_ = nullptr;
    FLKRenderLoopController* renderLoop_ = nullptr;
    QAction* undoAction_ = nullptr;
    QAction* redoAction_ = nullptr;
    QAction* editVerticesAction_ = nullptr;
    std::unique_ptr<FLKCanvasViewModels> canvasViewModels_;
    FLKObservation sceneLoadObservation_;
};

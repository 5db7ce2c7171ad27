#pragma once

#include <QMainWindow>

#include <memory>

#include "core/platform/FLKNotificationCenter.h"

class FLKCanvasViewModels;
class FLKSceneView;
class FLKTimelinePanel;
class QAction;
class QDockWidget;

// The one main window: the canvas, the timeline docked below it, and the
// Edit menu bound to the action pipeline. Shows the first built-in template
// at start and every scene the scene loader loads later, with a fresh undo
// history each time.
class FLKMainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit FLKMainWindow(QWidget* parent = nullptr);
    ~FLKMainWindow() override;

    FLKSceneView* sceneView() const { return sceneView_; }
    FLKTimelinePanel* timelinePanel() const { return timelinePanel_; }
    QDockWidget* timelineDock() const { return timelineDock_; }
    // The canvas's view models of the scene shown; null until one is.
    FLKCanvasViewModels* canvasViewModels() const { return canvasViewModels_.get(); }
    QAction* undoAction() const { return undoAction_; }
    QAction* redoAction() const { return redoAction_; }
    QAction* editVerticesAction() const { return editVerticesAction_; }

    // Loads the first template unless a scene is loaded already, then shows it.
    void showScene();

private:
    void buildEditMenu();
    void buildTimelineDock();
    void sceneDidUpdate();

    FLKSceneView* sceneView_ = nullptr;
    FLKTimelinePanel* timelinePanel_ = nullptr;
    QDockWidget* timelineDock_ = nullptr;
    QAction* undoAction_ = nullptr;
    QAction* redoAction_ = nullptr;
    QAction* editVerticesAction_ = nullptr;
    std::unique_ptr<FLKCanvasViewModels> canvasViewModels_;
    FLKObservation sceneLoadObservation_;
};

#pragma once

#include <QMainWindow>

#include <QStringList>

#include <memory>

#include "core/platform/FLKNotificationCenter.h"

class FLKCanvasViewModels;
class FLKDocumentController;
class FLKFileHandler;
class FLKMainMenu;
class FLKSceneView;
class QAction;

// The one main window: the canvas, the menus and the document they work on.
// Closing it asks to save unsaved changes and quits. Shows the first built-in template at start and every scene the
// scene loader loads later, with a fresh undo history each time.
class FLKMainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit FLKMainWindow(QWidget* parent = nullptr);
    ~FLKMainWindow() override;

    FLKSceneView* sceneView() const { return sceneView_; }
    // The canvas's view models of the scene shown; null until one is.
    FLKCanvasViewModels* canvasViewModels() const { return canvasViewModels_.get(); }
    QAction* undoAction() const;
    QAction* redoAction() const;
    QAction* editVerticesAction() const;
    FLKDocumentController* documentController() const { return documents_; }
    FLKFileHandler& fileHandler() const { return *fileHandler_; }
    FLKMainMenu* mainMenu() const { return mainMenu_; }

    // Loads the first template unless a scene is loaded already, then shows it.
    void showScene();

    // Raises the window and takes files another start handed over.
    void openHandedFiles(const QStringList& files);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void sceneDidUpdate();

    FLKSceneView* sceneView_ = nullptr;
    FLKDocumentController* documents_ = nullptr;
    std::unique_ptr<FLKFileHandler> fileHandler_;
    FLKMainMenu* mainMenu_ = nullptr;
    std::unique_ptr<FLKCanvasViewModels> canvasViewModels_;
    FLKObservation sceneLoadObservation_;
};

#include "app/shell/FLKMainWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>

#include "app/canvas/FLKCanvasOverlay.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKCanvasDropTarget.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainMenu.h"
#include "core/model/FLKSceneLoader.h"
#include "core/platform/FLKUserFeedback.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKSceneViewModel.h"

FLKMainWindow::FLKMainWindow(QWidget* parent) : QMainWindow(parent), sceneView_(new FLKSceneView(this)) {
    setWindowTitle("Flickwell");
    setCentralWidget(sceneView_);
    documents_ = new FLKDocumentController(this, this);
    fileHandler_ = std::make_unique<FLKFileHandler>(*documents_, [this](const std::shared_ptr<FLKObject>& added) {
        if (canvasViewModels_) canvasViewModels_->sceneViewModel()->viewModelDidDragAndDropInteractable(nullptr, added);
        sceneView_->update();
    });
    mainMenu_ = new FLKMainMenu(*this, *documents_, *fileHandler_);
    new FLKCanvasDropTarget(sceneView_, *fileHandler_);
    auto& center = FLKNotificationCenter::defaultCenter();
    sceneLoadObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                   [this](const FLKNotification&) { sceneDidUpdate(); }));
}

FLKMainWindow::~FLKMainWindow() {
    sceneView_->setActionsNotifier(nullptr);
    sceneView_->setOverlay(nullptr);
}

QAction* FLKMainWindow::undoAction() const { return mainMenu_->undoAction(); }
QAction* FLKMainWindow::redoAction() const { return mainMenu_->redoAction(); }
QAction* FLKMainWindow::editVerticesAction() const { return mainMenu_->editVerticesAction(); }

void FLKMainWindow::openHandedFiles(const QStringList& files) {
    if (isMinimized()) showNormal();
    raise();
    activateWindow();
    for (const auto& file : files) fileHandler_->handleOpenURL(file.toStdString());
}

void FLKMainWindow::closeEvent(QCloseEvent* event) {
    if (!documents_->maybeSave()) return event->ignore();
    event->accept();
    QCoreApplication::quit();
}

void FLKMainWindow::showScene() {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    if (loader.currentScene()) return sceneDidUpdate();
    FLKError error;
    // A successful load announces itself, which shows the scene.
    if (!loader.loadFirstScene(&error)) FLKUserFeedback::shared().presentError(error);
}

void FLKMainWindow::sceneDidUpdate() {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    FLKActionPipeline::sharedPipeline().clear();
    // The old view models go only once the canvas no longer points at them.
    auto models = std::make_unique<FLKCanvasViewModels>(loader.currentScene(), FLKCursorManager::defaultManager());
    sceneView_->setActionsNotifier(&models->notifier());
    sceneView_->setOverlay(std::make_shared<FLKCanvasOverlay>(models->framing(), models->cornering()));
    canvasViewModels_ = std::move(models);
    sceneView_->setScene(loader.currentScene());
}

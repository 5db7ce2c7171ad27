#include "app/shell/FLKMainWindow.h"

#include <QAction>
#include <QDockWidget>
#include <QMenuBar>

#include "app/bridge/FLKMenuItemBinding.h"
#include "app/canvas/FLKCanvasOverlay.h"
#include "app/canvas/FLKSceneView.h"
#include "app/timeline/FLKTimelinePanel.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneQuery.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKTimeline.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKEditRedoMenuItemViewModel.h"
#include "editing/FLKEditUndoMenuItemViewModel.h"
#include "editing/FLKSceneViewModel.h"
#include "editing/FLKTimelinePanelViewModel.h"

FLKMainWindow::FLKMainWindow(QWidget* parent) : QMainWindow(parent), sceneView_(new FLKSceneView(this)) {
    setWindowTitle("Flickwell");
    setCentralWidget(sceneView_);
    buildEditMenu();
    buildTimelineDock();
    auto& center = FLKNotificationCenter::defaultCenter();
    sceneLoadObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                   [this](const FLKNotification&) { sceneDidUpdate(); }));
}

FLKMainWindow::~FLKMainWindow() {
    timelinePanel_->setViewModel(nullptr);
    sceneView_->setActionsNotifier(nullptr);
    sceneView_->setOverlay(nullptr);
}

void FLKMainWindow::buildEditMenu() {
    QMenu* edit = menuBar()->addMenu("&Edit");
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    // Undo and redo change the model outside any canvas gesture: redraw.
    undoAction_ = edit->addAction(QString());
    undoAction_->setShortcut(QKeySequence::Undo);
    new FLKMenuItemBinding(undoAction_, std::make_shared<FLKEditUndoMenuItemViewModel>(), [this, &pipeline] {
        pipeline.undo();
        sceneView_->update();
    });
    redoAction_ = edit->addAction(QString());
    redoAction_->setShortcuts(QKeySequence::Redo);
    new FLKMenuItemBinding(redoAction_, std::make_shared<FLKEditRedoMenuItemViewModel>(), [this, &pipeline] {
        pipeline.redo();
        sceneView_->update();
    });
    // Shortcuts of menu actions work only in a window they belong to.
    addAction(undoAction_);
    addAction(redoAction_);
    edit->addSeparator();
    editVerticesAction_ = edit->addAction("Edit Vertices");
    connect(editVerticesAction_, &QAction::triggered, this, [this] {
        if (!canvasViewModels_) return;
        canvasViewModels_->sceneViewModel()->toggleVertexEditingWidget();
        sceneView_->update();
    });
}

void FLKMainWindow::buildTimelineDock() {
    timelineDock_ = new QDockWidget("Timeline", this);
    timelineDock_->setObjectName("timelineDock");  // names the dock in a saved window layout
    timelineDock_->setAllowedAreas(Qt::BottomDockWidgetArea | Qt::TopDockWidgetArea);
    timelinePanel_ = new FLKTimelinePanel(timelineDock_);
    timelineDock_->setWidget(timelinePanel_);
    addDockWidget(Qt::BottomDockWidgetArea, timelineDock_);
    // Until the canvas draws on its own refresh, the timeline asks for its frames.
    connect(timelinePanel_, &FLKTimelinePanel::frameChanged, sceneView_, qOverload<>(&QWidget::update));
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

    // The document's timeline is the one the clock plays and the screen shows.
    auto timeline = loader.currentTimeline();
    if (timeline) {
        FLKTimeline::setMasterTimeline(timeline);
        timeline->mapScene(loader.currentScene());
    }
    timelinePanel_->setViewModel(timeline ? std::make_shared<FLKTimelinePanelViewModel>(
                                                timeline, std::make_shared<FLKSceneQuery>(loader.currentScene()))
                                          : nullptr);
}

#include "app/shell/FLKMainWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDockWidget>
#include <QPointer>
#include <QSettings>

#include "app/bridge/FLKQtCursorDisplay.h"
#include "app/bridge/FLKQtMainWindowLocator.h"
#include "app/canvas/FLKCanvasOverlay.h"
#include "app/canvas/FLKSceneView.h"
#include "app/canvas/FLKTooltipsPanel.h"
#include "app/sidepanel/FLKBackgroundPage.h"
#include "app/sidepanel/FLKExportPage.h"
#include "app/sidepanel/FLKSidePanel.h"
#include "app/sidepanel/FLKMasksPage.h"
#include "app/sidepanel/FLKRecordPage.h"
#include "app/sidepanel/FLKTemplatesPage.h"
#include "app/shell/FLKCanvasDropTarget.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainMenu.h"
#include "app/shell/FLKRenderLoopController.h"
#include "app/shell/FLKWelcomeWindow.h"
#include "app/timeline/FLKTimelinePanel.h"
#include "app/timeline/FLKTimelineView.h"
#include "core/capture/FLKScreenDevice.h"
#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKSceneQuery.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUserDefaultsKeys.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/timeline/FLKTimeline.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKCursorManager.h"
#include "editing/FLKSceneViewModel.h"
#include "editing/FLKTimelinePanelViewModel.h"

FLKMainWindow::FLKMainWindow(QWidget* parent) : QMainWindow(parent), sceneView_(new FLKSceneView(this)) {
    setWindowTitle("Flickwell");
    setCentralWidget(sceneView_);
    renderLoop_ = new FLKRenderLoopController(this, sceneView_);
    FLKCursorManager::defaultManager()->setDisplay(std::make_shared<FLKQtCursorDisplay>(sceneView_));
    FLKScreenDevice::setMainWindowLocator(std::make_shared<FLKQtMainWindowLocator>(this));
    documents_ = new FLKDocumentController(this, this);
    fileHandler_ = std::make_unique<FLKFileHandler>(*documents_, [this](const std::shared_ptr<FLKObject>& added) {
        if (canvasViewModels_) canvasViewModels_->sceneViewModel()->viewModelDidDragAndDropInteractable(nullptr, added);
        sceneView_->redraw();
    });
    mainMenu_ = new FLKMainMenu(*this, *documents_, *fileHandler_);
    new FLKCanvasDropTarget(sceneView_, *fileHandler_);
    tooltipsPanel_ = new FLKTooltipsPanel(sceneView_);
    buildTimelineDock();
    buildSidePanelDock();
    restoreWindowLayout();
    mainMenu_->setDeleteHandler([this] { timelinePanel_->timelineView()->deleteSelectedClips(); });
    auto& center = FLKNotificationCenter::defaultCenter();
    sceneLoadObservation_ = FLKObservation(
        center, center.addObserver(kFLKSceneLoaderDidLoadSceneNotification, nullptr,
                                   [this](const FLKNotification&) { sceneDidUpdate(); }));
}

FLKMainWindow::~FLKMainWindow() {
    // The shared cursor manager outlives this window and its pixmaps must not outlive Qt.
    FLKCursorManager::defaultManager()->setDisplay(nullptr);
    FLKScreenDevice::setMainWindowLocator(nullptr);
    timelinePanel_->setViewModel(nullptr);
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
    saveWindowLayout();
    event->accept();
    QCoreApplication::quit();
}

void FLKMainWindow::buildTimelineDock() {
    timelineDock_ = new QDockWidget("Timeline", this);
    timelineDock_->setObjectName("timelineDock");  // names the dock in a saved window layout
    timelineDock_->setAllowedAreas(Qt::BottomDockWidgetArea | Qt::TopDockWidgetArea);
    timelinePanel_ = new FLKTimelinePanel(timelineDock_);
    timelineDock_->setWidget(timelinePanel_);
    addDockWidget(Qt::BottomDockWidgetArea, timelineDock_);
    // The canvas follows the play head itself; edits in the panel change the
    // picture without moving it.
    connect(timelinePanel_, &FLKTimelinePanel::frameChanged, sceneView_, &FLKSceneView::redraw);
    connect(sceneView_, &FLKSceneView::playHeadFrameDue, timelinePanel_, &FLKTimelinePanel::refreshWithFrame);
}

void FLKMainWindow::buildSidePanelDock() {
    sidePanelDock_ = new QDockWidget("Inspector", this);
    sidePanelDock_->setObjectName("sidePanelDock");
    sidePanelDock_->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    sidePanel_ = new FLKSidePanel(sidePanelDock_);
    // Two columns of previews.
    sidePanel_->setMinimumWidth(300);
    sidePanelDock_->setWidget(sidePanel_);
    addDockWidget(Qt::RightDockWidgetArea, sidePanelDock_);
    // Recording comes first: it is where a video starts.
    recordPage_ = new FLKRecordPage(*this);
    addSidePanelPage("Record", recordPage_);
    addSidePanelPage("Templates", new FLKTemplatesPage(*this));
    addSidePanelPage("Background", new FLKBackgroundPage(*this));
    addSidePanelPage("Masks", new FLKMasksPage(*this));
    exportPage_ = new FLKExportPage(this);
    addSidePanelPage("Export", exportPage_);
    mainMenu_->addPanelItem(timelineDock_);
    mainMenu_->addPanelItem(sidePanelDock_);
}

void FLKMainWindow::addSidePanelPage(const QString& title, QWidget* page) { sidePanel_->addPage(title, page); }

QString FLKMainWindow::windowLayoutPath() {
    return QString::fromStdString((flk::configHome() / "window-layout.ini").string());
}

void FLKMainWindow::saveWindowLayout() const {
    QSettings settings(windowLayoutPath(), QSettings::IniFormat);
    settings.setValue("mainWindow/docks", saveState());
    settings.sync();
    if (settings.status() != QSettings::NoError) {
        qWarning("The window layout could not be kept in %s", qPrintable(windowLayoutPath()));
    }
}

bool FLKMainWindow::restoreWindowLayout() {
    const QSettings settings(windowLayoutPath(), QSettings::IniFormat);
    const QByteArray state = settings.value("mainWindow/docks").toByteArray();
    return !state.isEmpty() && restoreState(state);
}

void FLKMainWindow::showScene() {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    if (loader.currentScene()) {
        // A document opened before the launch sequence got here is already
        // wired; wiring it again would empty its undo history.
        if (sceneView_->scene() != loader.currentScene()) sceneDidUpdate();
        return;
    }
    FLKError error;
    // A successful load announces itself, which shows the scene.
    if (!loader.loadFirstScene(&error)) FLKUserFeedback::shared().presentError(error);
}

void FLKMainWindow::sceneDidUpdate() {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    FLKActionPipeline::sharedPipeline().clear();
    const auto& timeline = loader.currentTimeline();
    if (timeline) {
        FLKTimeline::setMasterTimeline(timeline);
        timeline->mapScene(loader.currentScene());
        // Queued: playing starts once everything below is wired to the scene.
        FLKMainQueue::main()->post([weak = std::weak_ptr(timeline), renderLoop = QPointer(renderLoop_)] {
            auto playing = weak.lock();
            if (playing && renderLoop && !renderLoop->isPaused()) playing->play();
        });
    }
    // The old view models go only once the canvas no longer points at them.
    auto models = std::make_unique<FLKCanvasViewModels>(loader.currentScene(), FLKCursorManager::defaultManager());
    sceneView_->setActionsNotifier(&models->notifier());
    sceneView_->setOverlay(std::make_shared<FLKCanvasOverlay>(*models));
    tooltipsPanel_->setDispatcher(models->tooltips());
    canvasViewModels_ = std::move(models);
    sceneView_->setScene(loader.currentScene());
    sceneView_->setTimeline(timeline);
    timelinePanel_->setViewModel(timeline ? std::make_shared<FLKTimelinePanelViewModel>(
                                                timeline, std::make_shared<FLKSceneQuery>(loader.currentScene()))
                                          : nullptr);
}

void FLKMainWindow::startLaunchSequence(FLKUserDefaults& defaults, std::shared_ptr<FLKMainQueue> queue) {
    // The window may be closed before the timers fire.
    QPointer<FLKMainWindow> self(this);
    queue->postAfter(0.1, [self] {
        if (self) self->setupPanels();
    });
    // Weak: the queue holds this task until it runs.
    queue->postAfter(0.4, [self, &defaults, weakQueue = std::weak_ptr<FLKMainQueue>(queue)] {
        auto queue = weakQueue.lock();
        if (!self || !queue) return;
        self->showScene();
        // Queued behind the scene's own work, so the welcome screen comes up over a drawn canvas.
        queue->post([self, &defaults] {
            if (!self) return;
            if (flk::shouldShowWelcomeScreen(defaults)) {
                self->enableUserInteraction(false);
                self->showWelcomeScreen(defaults);
            } else {
                self->enableUserInteraction(true);
                self->showPanels();
            }
        });
    });
}

void FLKMainWindow::setupPanels() {
    for (QDockWidget* dock : findChildren<QDockWidget*>(Qt::FindDirectChildrenOnly)) {
        if (!dock->isHidden()) panelsToShow_.emplace_back(dock);
        dock->hide();
    }
}

void FLKMainWindow::showPanels() {
    // Once: a panel the user closed later stays closed.
    for (const auto& dock : panelsToShow_) {
        if (dock) dock->show();
    }
    panelsToShow_.clear();
}

void FLKMainWindow::enableUserInteraction(bool enabled) { sceneView_->setUserInteractionEnabled(enabled); }

void FLKMainWindow::showWelcomeScreen(FLKUserDefaults& defaults) {
    if (welcomeWindow_) {
        welcomeWindow_->raise();
        welcomeWindow_->activateWindow();
        return;
    }
    welcomeWindow_ = new FLKWelcomeWindow(defaults, *documents_, this);
    connect(welcomeWindow_, &QDialog::finished, this, &FLKMainWindow::welcomeWindowDidClose);
    welcomeWindow_->show();
}

void FLKMainWindow::welcomeWindowDidClose() {
    enableUserInteraction(true);
    showPanels();
}

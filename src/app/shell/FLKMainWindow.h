#pragma once

#include <QMainWindow>
#include <QPointer>

#include <QStringList>

#include <memory>
#include <vector>

#include "app/shell/FLKWelcomeWindow.h"
#include "core/platform/FLKNotificationCenter.h"

class FLKCanvasViewModels;
class FLKTooltipsPanel;
class FLKMainQueue;
class FLKRenderLoopController;
class FLKDocumentController;
class FLKExportPage;
class FLKRecordPage;
class FLKFileHandler;
class FLKMainMenu;
class FLKSceneView;
class FLKUserDefaults;
class FLKTimelinePanel;
class FLKSidePanel;
class QAction;
class QDockWidget;

// The one main window: the canvas, the timeline docked below it, the
// inspectors beside it, the menus and the document they work on. Shows the first built-in template at start
// and every scene the scene loader loads later, with a fresh undo history
// each time; the loaded timeline becomes the master timeline, feeds the
// scene's video and starts playing. At launch it brings up its panels, then
// the scene, then the welcome screen. Closing it asks to save unsaved
// changes and quits.
class FLKMainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit FLKMainWindow(QWidget* parent = nullptr);
    ~FLKMainWindow() override;

    FLKSceneView* sceneView() const { return sceneView_; }
    FLKTimelinePanel* timelinePanel() const { return timelinePanel_; }
    QDockWidget* timelineDock() const { return timelineDock_; }
    FLKSidePanel* sidePanel() const { return sidePanel_; }
    QDockWidget* sidePanelDock() const { return sidePanelDock_; }
    // Adds an item and its page to the inspector panel, after the others.
    void addSidePanelPage(const QString& title, QWidget* page);
    // The canvas's view models of the scene shown; null until one is.
    FLKCanvasViewModels* canvasViewModels() const { return canvasViewModels_.get(); }
    QAction* undoAction() const;
    QAction* redoAction() const;
    QAction* editVerticesAction() const;
    FLKRenderLoopController* renderLoop() const { return renderLoop_; }
    FLKDocumentController* documentController() const { return documents_; }
    FLKFileHandler& fileHandler() const { return *fileHandler_; }
    FLKMainMenu* mainMenu() const { return mainMenu_; }
    FLKExportPage* exportPage() const { return exportPage_; }
    FLKRecordPage* recordPage() const { return recordPage_; }

    // Loads the first template unless a scene is loaded already, then shows it.
    void showScene();

    // On `queue`'s timers: the panels after 0.1 s, the scene after 0.4 s,
    // then the welcome screen when `defaults` ask for it (the canvas ignoring
    // input until it closes), otherwise the panels. `defaults` must outlive
    // the window.
    void startLaunchSequence(FLKUserDefaults& defaults, std::shared_ptr<FLKMainQueue> queue);
    // Panels are the window's docks: those shown (as the kept layout has
    // them) are hidden from here until showPanels brings them back.
    void setupPanels();
    void showPanels();
    void showWelcomeScreen(FLKUserDefaults& defaults);
    // The open welcome screen, or null.
    FLKWelcomeWindow* welcomeWindow() const { return welcomeWindow_; }
    void enableUserInteraction(bool enabled);
    // Raises the window and takes files another start handed over.
    void openHandedFiles(const QStringList& files);

    // Where the docks are, kept for the next start in the config folder;
    // closing the window saves it, making one restores it.
    void saveWindowLayout() const;
    bool restoreWindowLayout();
    static QString windowLayoutPath();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildTimelineDock();
    void buildSidePanelDock();
    void sceneDidUpdate();
    void welcomeWindowDidClose();

    FLKSceneView* sceneView_ = nullptr;
    FLKTooltipsPanel* tooltipsPanel_ = nullptr;  // a child of the canvas
    FLKRenderLoopController* renderLoop_ = nullptr;
    FLKTimelinePanel* timelinePanel_ = nullptr;
    FLKExportPage* exportPage_ = nullptr;
    FLKRecordPage* recordPage_ = nullptr;
    QDockWidget* timelineDock_ = nullptr;
    FLKSidePanel* sidePanel_ = nullptr;
    QDockWidget* sidePanelDock_ = nullptr;
    FLKDocumentController* documents_ = nullptr;
    std::unique_ptr<FLKFileHandler> fileHandler_;
    FLKMainMenu* mainMenu_ = nullptr;
    std::unique_ptr<FLKCanvasViewModels> canvasViewModels_;
    QPointer<FLKWelcomeWindow> welcomeWindow_;
    std::vector<QPointer<QDockWidget>> panelsToShow_;
    FLKObservation sceneLoadObservation_;
};

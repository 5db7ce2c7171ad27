#include "app/shell/FLKMainMenu.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

#include "app/bridge/FLKMenuItemBinding.h"
#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKBreadcrumbLog.h"
#include "app/shell/FLKDocumentController.h"
#include "app/shell/FLKFileHandler.h"
#include "app/shell/FLKMainWindow.h"
#include "app/shell/FLKPreferencesDialog.h"
#include "core/model/FLKSceneBounds.h"
#include "core/model/FLKTemplateManager.h"
#include "core/platform/FLKFileExtensions.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKPerformanceSettings.h"
#include "core/platform/FLKUserDefaults.h"
#include "core/platform/FLKUserFeedback.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKQuad.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/scene/FLKVideoSprite.h"
#include "core/timeline/FLKTimeline.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKCanvasViewModels.h"
#include "editing/FLKEditRedoMenuItemViewModel.h"
#include "editing/FLKEditUndoMenuItemViewModel.h"
#include "editing/FLKSceneViewModel.h"
#include "editing/FLKSelectionWidgetViewModel.h"

namespace {
// The orientation of the one selected screen's video, 0 when there is none.
unsigned selectedVideoOrientation(const FLKCanvasViewModels* models) {
    if (!models || !models->selecting()) return 0;
    const auto& selected = models->selecting()->selectedObjects();
    auto container = selected.size() == 1 ? std::dynamic_pointer_cast<FLKVideoContainer>(selected.front()) : nullptr;
    return container && container->video() ? container->video()->videoOrientation() : 0;
}
}  // namespace

FLKMainMenu::FLKMainMenu(FLKMainWindow& window, FLKDocumentController& documents, FLKFileHandler& files)
    : QObject(&window), window_(window), documents_(documents), files_(files) {
    buildFileMenu();
    buildEditMenu();
    buildViewMenu();
    buildPlaybackMenu();
    buildHelpMenu();
}

QAction* FLKMainMenu::addItem(QMenu* menu, const QString& title, std::function<void()> perform, Shortcut shortcut) {
    QAction* action = menu->addAction(title);
    if (perform) connect(action, &QAction::triggered, this, [perform = std::move(perform)] { perform(); });
    FLKBreadcrumbLog::watchMenuItem(menu->title(), action);
    // Shortcuts of menu actions work only in a window they belong to.
    if (shortcut == Shortcut::Possible) window_.addAction(action);
    return action;
}

void FLKMainMenu::buildFileMenu() {
    QMenu* file = window_.menuBar()->addMenu("&File");
    newAction_ = addItem(file, "&New", [this] { documents_.newDocument(); });
    newAction_->setShortcut(QKeySequence::New);
    newFromTemplateMenu_ = file->addMenu("New from &Template");
    connect(newFromTemplateMenu_, &QMenu::aboutToShow, this, &FLKMainMenu::fillNewFromTemplateMenu);
    fillNewFromTemplateMenu();
    openAction_ = addItem(file, "&Open...", [this] { documents_.openWithDialog(&window_); });
    openAction_->setShortcut(QKeySequence::Open);
    openRecentMenu_ = file->addMenu("Open &Recent");
    connect(openRecentMenu_, &QMenu::aboutToShow, this, &FLKMainMenu::fillOpenRecentMenu);
    fillOpenRecentMenu();
    file->addSeparator();
    saveAction_ = addItem(file, "&Save", [this] { documents_.save(); });
    saveAction_->setShortcut(QKeySequence::Save);
    saveAsAction_ = addItem(file, "Save &As...", [this] { documents_.saveAs(); });
    saveAsAction_->setShortcut(QKeySequence::SaveAs);
    saveAsTemplateAction_ = addItem(file, "Save as Te&mplate...", [this] { saveAsTemplateWithDialog(); });
    file->addSeparator();
    importMediaAction_ = addItem(file, "&Import Media...", [this] { importMediaWithDialog(); });
    importMediaAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I));
    file->addSeparator();
    // Closing the window is what asks to save and quits.
    quitAction_ = addItem(file, "&Quit", [this] { window_.close(); });
    quitAction_->setShortcut(QKeySequence::Quit);
    quitAction_->setMenuRole(QAction::QuitRole);
}

void FLKMainMenu::fillNewFromTemplateMenu() {
    newFromTemplateMenu_->clear();
    for (const auto& aTemplate : FLKTemplateManager::defaultManager().templates()) {
        addItem(newFromTemplateMenu_, QString::fromStdString(aTemplate->name()),
                [this, aTemplate] { documents_.newDocument(aTemplate); }, Shortcut::None);
    }
    newFromTemplateMenu_->setEnabled(!newFromTemplateMenu_->isEmpty());
}

void FLKMainMenu::fillOpenRecentMenu() {
    openRecentMenu_->clear();
    for (const auto& path : documents_.recentDocuments()) {
        QAction* item = addItem(
            openRecentMenu_, QFileInfo(path).fileName(), [this, path] { documents_.openDocument(path); },
            Shortcut::None);
        item->setToolTip(path);
    }
    if (!openRecentMenu_->isEmpty()) {
        openRecentMenu_->addSeparator();
        addItem(openRecentMenu_, "&Clear Menu", [this] { documents_.clearRecentDocuments(); }, Shortcut::None);
    }
    openRecentMenu_->setEnabled(!openRecentMenu_->isEmpty());
}

void FLKMainMenu::buildEditMenu() {
    QMenu* edit = window_.menuBar()->addMenu("&Edit");
    auto& pipeline = FLKActionPipeline::sharedPipeline();
    // Undo and redo change the model outside any canvas gesture: redraw.
    undoAction_ = addItem(edit, QString(), nullptr);
    undoAction_->setShortcut(QKeySequence::Undo);
    new FLKMenuItemBinding(undoAction_, std::make_shared<FLKEditUndoMenuItemViewModel>(), [this, &pipeline] {
        pipeline.undo();
        redraw();
    });
    redoAction_ = addItem(edit, QString(), nullptr);
    redoAction_->setShortcuts(QKeySequence::Redo);
    new FLKMenuItemBinding(redoAction_, std::make_shared<FLKEditRedoMenuItemViewModel>(), [this, &pipeline] {
        pipeline.redo();
        redraw();
    });
    edit->addSeparator();
    deleteAction_ = addItem(edit, "&Delete", [this] {
        if (deleteHandler_) deleteHandler_();
    });
    deleteAction_->setShortcut(QKeySequence::Delete);
    deleteAction_->setEnabled(false);
    edit->addSeparator();
    preferencesAction_ = addItem(edit, "Pre&ferences...", [this] { showPreferences(); });
    preferencesAction_->setShortcut(QKeySequence::Preferences);
    preferencesAction_->setMenuRole(QAction::PreferencesRole);
}

void FLKMainMenu::showPreferences() {
    if (!preferencesDialog_) {
        preferencesDialog_ = new FLKPreferencesDialog(FLKPerformanceSettings::globalSettings(),
                                                      FLKUserDefaults::standardUserDefaults(), &window_);
        preferencesDialog_->setAttribute(Qt::WA_DeleteOnClose);
    }
    preferencesDialog_->show();
    preferencesDialog_->raise();
    preferencesDialog_->activateWindow();
}

void FLKMainMenu::setDeleteHandler(std::function<void()> handler) {
    deleteHandler_ = std::move(handler);
    deleteAction_->setEnabled(static_cast<bool>(deleteHandler_));
}

void FLKMainMenu::buildViewMenu() {
    QMenu* view = window_.menuBar()->addMenu("&View");
    viewMenu_ = view;
    rotateVideoAction_ = addItem(view, "&Rotate Video", [this] { rotateVideo(); });
    rotateVideoAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    editVerticesAction_ = addItem(view, "Edit &Vertices", [this] {
        if (!window_.canvasViewModels()) return;
        window_.canvasViewModels()->sceneViewModel()->toggleVertexEditingWidget();
        redraw();
    });
    editVerticesAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    focusCameraAction_ = addItem(view, "&Focus Camera", [this] {
        window_.sceneView()->focusCamera();
        redraw();
    });
    focusCameraAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
    view->addSeparator();
    zoomInAction_ = addItem(view, "Zoom &In", [this] { zoomBy(kZoomStep); });
    zoomInAction_->setShortcuts(QKeySequence::ZoomIn);
    zoomOutAction_ = addItem(view, "Zoom &Out", [this] { zoomBy(1 / kZoomStep); });
    zoomOutAction_->setShortcuts(QKeySequence::ZoomOut);
    zoomToFitAction_ = addItem(view, "Zoom to &Fit", [this] { zoomToFit(); });
    zoomToFitAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
}

void FLKMainMenu::addPanelItem(QDockWidget* panel) {
    if (!panelsSeparator_) panelsSeparator_ = viewMenu_->addSeparator();
    QAction* item = panel->toggleViewAction();
    viewMenu_->addAction(item);
    FLKBreadcrumbLog::watchMenuItem(viewMenu_->title(), item);
}

void FLKMainMenu::buildPlaybackMenu() {
    QMenu* playback = window_.menuBar()->addMenu("&Playback");
    playPauseAction_ = addItem(playback, "&Play/Pause", [] {
        FLKTimeline::masterTimeline()->togglePlay();
    });
    playPauseAction_->setShortcut(QKeySequence(Qt::Key_Space));
    loopAction_ = addItem(playback, "&Loop", nullptr);
    loopAction_->setCheckable(true);
    loopAction_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    connect(loopAction_, &QAction::toggled, this, [](bool on) { FLKTimeline::masterTimeline()->setLooping(on); });
    // The master timeline changes with every loaded scene: show its state.
    connect(playback, &QMenu::aboutToShow, this,
            [this] { loopAction_->setChecked(FLKTimeline::masterTimeline()->isLooping()); });
}

void FLKMainMenu::buildHelpMenu() {
    QMenu* help = window_.menuBar()->addMenu("&Help");
    welcomeAction_ = addItem(
        help, "&Welcome to Flickwell", [this] { window_.showWelcomeScreen(FLKUserDefaults::standardUserDefaults()); },
        Shortcut::None);
}

void FLKMainMenu::importMediaWithDialog() {
    const QStringList paths = QFileDialog::getOpenFileNames(
        &window_, "Import Media", QDir::homePath(),
        "Media (*.mp4 *.m4v *.mov *.mkv *.webm *.avi *.mp3 *.m4a *.aac *.wav *.flac *.ogg *.oga *.opus "
        "*.png *.jpg *.jpeg *.gif *.bmp *.tif *.tiff *.webp *.heic);;All files (*)");
    for (const auto& path : paths) files_.handleOpenURL(path.toStdString());
}

void FLKMainMenu::saveAsTemplateWithDialog() {
    bool accepted = false;
    const QString name =
        QInputDialog::getText(&window_, "Save as Template", "Template name:", QLineEdit::Normal, documents_.displayName(),
                              &accepted)
            .trimmed();
    if (!accepted || name.isEmpty()) return;
    auto& templates = FLKTemplateManager::defaultManager();
    if (!flk::isValidFileName(name.toStdString())) {
        FLKUserFeedback::shared().presentError(flk::fileSystemErrorWithMessage(
            "\"" + name.toStdString() + "\" cannot name a template.", 0, "A name may not hold \"/\"."));
        return;
    }
    bool isBundled = false;
    const bool exists = templates.templateExistsWithName(name.toStdString(), &isBundled);
    if (exists && isBundled) {
        FLKUserFeedback::shared().presentError(flk::fileSystemErrorWithMessage(
            "\"" + name.toStdString() + "\" is a built-in template.", 0, "Choose another name."));
        return;
    }
    if (exists && QMessageBox::question(&window_, "Save as Template",
                                        QStringLiteral("A template named \"%1\" already exists. Replace it?").arg(name),
                                        QMessageBox::Yes | QMessageBox::Cancel) != QMessageBox::Yes) {
        return;
    }
    templates.saveTemplateWithName(name.toStdString(), exists);
}

void FLKMainMenu::rotateVideo() {
    FLKCanvasViewModels* models = window_.canvasViewModels();
    if (!models) return;
    const unsigned before = selectedVideoOrientation(models);
    models->sceneViewModel()->clockwiseRotateSelectedSprite();
    // Turning is not undoable: it counts as a change of its own.
    if (selectedVideoOrientation(models) != before) documents_.noteChange();
    redraw();
}

void FLKMainMenu::zoomBy(double factor) {
    auto scene = window_.sceneView()->scene();
    auto camera = scene ? scene->mainCamera() : nullptr;
    if (!camera) return;
    const FLKRect viewport = camera->viewport();
    camera->setScale(camera->scale() * factor, {viewport.size.width / 2, viewport.size.height / 2});
    redraw();
}

void FLKMainMenu::zoomToFit() {
    auto scene = window_.sceneView()->scene();
    auto camera = scene ? scene->mainCamera() : nullptr;
    if (!camera) return;
    camera->focus(FLKQuad::quadWithFrame(FLKSceneBounds(scene).bounds()));
    redraw();
}

void FLKMainMenu::redraw() { window_.sceneView()->redraw(); }

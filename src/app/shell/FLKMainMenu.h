#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

#include "app/shell/FLKPreferencesDialog.h"

class FLKDocumentController;
class FLKFileHandler;
class FLKMainWindow;
class QAction;
class QDockWidget;
class QMenu;

// The main window's menu bar: File, Edit, View, Playback and Help, with the
// desktop's standard shortcuts where there is one. Every item chosen leaves a
// breadcrumb. Main thread only.
class FLKMainMenu : public QObject {
    Q_OBJECT

public:
    FLKMainMenu(FLKMainWindow& window, FLKDocumentController& documents, FLKFileHandler& files);

    QAction* newAction() const { return newAction_; }
    QAction* openAction() const { return openAction_; }
    QAction* saveAction() const { return saveAction_; }
    QAction* saveAsAction() const { return saveAsAction_; }
    QAction* saveAsTemplateAction() const { return saveAsTemplateAction_; }
    QAction* importMediaAction() const { return importMediaAction_; }
    QAction* quitAction() const { return quitAction_; }
    QAction* undoAction() const { return undoAction_; }
    QAction* redoAction() const { return redoAction_; }
    QAction* deleteAction() const { return deleteAction_; }
    QAction* preferencesAction() const { return preferencesAction_; }
    // The open Preferences dialog, or null.
    FLKPreferencesDialog* preferencesDialog() const { return preferencesDialog_; }
    QAction* rotateVideoAction() const { return rotateVideoAction_; }
    QAction* editVerticesAction() const { return editVerticesAction_; }
    QAction* focusCameraAction() const { return focusCameraAction_; }
    QAction* zoomInAction() const { return zoomInAction_; }
    QAction* zoomOutAction() const { return zoomOutAction_; }
    QAction* zoomToFitAction() const { return zoomToFitAction_; }
    QAction* playPauseAction() const { return playPauseAction_; }
    QAction* loopAction() const { return loopAction_; }
    QAction* welcomeAction() const { return welcomeAction_; }
    QMenu* openRecentMenu() const { return openRecentMenu_; }
    QMenu* newFromTemplateMenu() const { return newFromTemplateMenu_; }

    // What Delete removes belongs to the panel that holds the selection (the
    // timeline's clips); until one sets it, Delete stays disabled.
    void setDeleteHandler(std::function<void()> handler);
    // An item of the View menu that shows or hides the panel.
    void addPanelItem(QDockWidget* panel);

    // Zoom steps multiply or divide the camera's scale by this.
    static constexpr double kZoomStep = 1.25;

private:
    // Items of menus filled as they open (recent documents, templates) take no
    // shortcut and belong to their menu alone, which deletes them on refilling.
    enum class Shortcut { Possible, None };
    QAction* addItem(QMenu* menu, const QString& title, std::function<void()> perform,
                     Shortcut shortcut = Shortcut::Possible);
    void buildFileMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildPlaybackMenu();
    void buildHelpMenu();
    void fillOpenRecentMenu();
    void fillNewFromTemplateMenu();
    void saveAsTemplateWithDialog();
    void importMediaWithDialog();
    void rotateVideo();
    void showPreferences();
    void zoomBy(double factor);
    void zoomToFit();
    void redraw();

    FLKMainWindow& window_;
    FLKDocumentController& documents_;
    FLKFileHandler& files_;
    std::function<void()> deleteHandler_;

    QAction* newAction_ = nullptr;
    QAction* openAction_ = nullptr;
    QAction* saveAction_ = nullptr;
    QAction* saveAsAction_ = nullptr;
    QAction* saveAsTemplateAction_ = nullptr;
    QAction* importMediaAction_ = nullptr;
    QAction* quitAction_ = nullptr;
    QAction* undoAction_ = nullptr;
    QAction* redoAction_ = nullptr;
    QAction* deleteAction_ = nullptr;
    QAction* preferencesAction_ = nullptr;
    QPointer<FLKPreferencesDialog> preferencesDialog_;
    QAction* rotateVideoAction_ = nullptr;
    QAction* editVerticesAction_ = nullptr;
    QAction* focusCameraAction_ = nullptr;
    QAction* zoomInAction_ = nullptr;
    QAction* zoomOutAction_ = nullptr;
    QAction* zoomToFitAction_ = nullptr;
    QAction* playPauseAction_ = nullptr;
    QAction* loopAction_ = nullptr;
    QAction* welcomeAction_ = nullptr;
    QMenu* openRecentMenu_ = nullptr;
    QMenu* newFromTemplateMenu_ = nullptr;
    QMenu* viewMenu_ = nullptr;
    QAction* panelsSeparator_ = nullptr;
};

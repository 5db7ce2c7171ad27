#pragma once

#include <QObject>

#include "core/platform/FLKNotificationCenter.h"

class FLKSceneView;
class QWidget;

// Runs the canvas and the master timeline only while someone can watch them:
// the loop pauses while the main window is minimised or another program's
// window is active, and for the whole of an export, whatever the window does
// meanwhile. Windows of our own (floating panels, dialogs) becoming active do
// not pause it. Each pause is announced before it happens, each resume after.
// Main thread only.
class FLKRenderLoopController : public QObject {
    Q_OBJECT

public:
    FLKRenderLoopController(QWidget* mainWindow, FLKSceneView* sceneView);
    ~FLKRenderLoopController() override;

    bool isPaused() const { return paused_; }
    bool isExporting() const { return exporting_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void windowActivationChanged();
    void exportDidStart();
    void exportDidFinish();
    void performanceSettingsDidUpdate();
    void apply();

    QWidget* const mainWindow_;
    FLKSceneView* const sceneView_;  // a child of the main window
    bool windowAway_ = false;        // minimised, or another program is active
    bool wasActive_ = false;
    bool exporting_ = false;
    bool paused_ = false;
    bool resumesPlayback_ = false;  // the master timeline played when the loop paused
    FLKObservation exportStart_;
    FLKObservation exportFinish_;
    FLKObservation performanceLevel_;
};

#include "app/shell/FLKRenderLoopController.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <functional>

#include "app/canvas/FLKSceneView.h"
#include "app/shell/FLKAppNotifications.h"
#include "core/exporter/FLKExportQueue.h"
#include "core/platform/FLKPerformanceSettings.h"
#include "core/timeline/FLKTimeline.h"

namespace {
// Notifications may come from any thread; their handling belongs on ours.
FLKObservation observeOnMainThread(QObject* receiver, const char* name, std::function<void()> handler) {
    auto& center = FLKNotificationCenter::defaultCenter();
    return FLKObservation(center, center.addObserver(name, nullptr, [receiver, handler](const FLKNotification&) {
                              QMetaObject::invokeMethod(receiver, handler);
                          }));
}
}  // namespace

FLKRenderLoopController::FLKRenderLoopController(QWidget* mainWindow, FLKSceneView* sceneView)
    : QObject(mainWindow), mainWindow_(mainWindow), sceneView_(sceneView) {
    mainWindow_->installEventFilter(this);
    exportStart_ = observeOnMainThread(this, FLKExportQueueDidStartNotification, [this] { exportDidStart(); });
    exportFinish_ = observeOnMainThread(this, FLKExportQueueDidFinishNotification, [this] { exportDidFinish(); });
    performanceLevel_ = observeOnMainThread(this, FLKPerformanceSettingsDidUpdatePerformanceLevel,
                                            [this] { performanceSettingsDidUpdate(); });
}

FLKRenderLoopController::~FLKRenderLoopController() = default;

bool FLKRenderLoopController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == mainWindow_) {
        switch (event->type()) {
            case QEvent::WindowStateChange:
            case QEvent::WindowActivate:
                windowActivationChanged();
                break;
            case QEvent::WindowDeactivate:
                // The window taking over is known only once the switch is complete.
                QTimer::singleShot(0, this, [this] { windowActivationChanged(); });
                break;
            default:
                break;
        }
    }
    return QObject::eventFilter(watched, event);
}

void FLKRenderLoopController::windowActivationChanged() {
    if (mainWindow_->isActiveWindow()) wasActive_ = true;
    // No window of ours active means another program is. A window that never
    // was active (there is no window manager) is not away.
    const bool otherProgramActive = wasActive_ && QApplication::activeWindow() == nullptr;
    windowAway_ = mainWindow_->isMinimized() || otherProgramActive;
    apply();
}

void FLKRenderLoopController::exportDidStart() {
    exporting_ = true;
    apply();
}

void FLKRenderLoopController::exportDidFinish() {
    exporting_ = false;
    apply();
}

void FLKRenderLoopController::performanceSettingsDidUpdate() {
    sceneView_->applyPerformanceSettings(FLKPerformanceSettings::globalSettings());
}

void FLKRenderLoopController::apply() {
    const bool pause = windowAway_ || exporting_;
    if (pause == paused_) return;
    paused_ = pause;
    auto& center = FLKNotificationCenter::defaultCenter();
    auto timeline = FLKTimeline::masterTimeline();
    if (pause) {
        center.post(FLKAppWillWillPauseNotification);
        sceneView_->setPaused(true);
        // Coming back resumes what was playing, not what the user had paused.
        resumesPlayback_ = timeline->isPlayingOrWaiting();
        timeline->pause();
    } else {
        if (resumesPlayback_) timeline->play();
        sceneView_->setPaused(false);
        center.post(FLKAppDidUnPauseNotification);
    }
}

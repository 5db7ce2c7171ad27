#include "app/shell/FLKApplicationDelegate.h"

#include <QGuiApplication>
#include <QScreen>

#include "app/shell/FLKMainWindow.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKUserDefaultsKeys.h"

namespace {
const QSize kDefaultWindowSize(1280, 800);

void synchronize(FLKUserDefaults& defaults) {
    FLKError error;
    if (!defaults.synchronize(&error)) flk::log("Could not save the user defaults: %s", error.fullMessage().c_str());
}
}  // namespace

FLKApplicationDelegate::FLKApplicationDelegate(FLKUserDefaults& defaults, std::shared_ptr<FLKMainQueue> queue)
    : defaults_(defaults), queue_(std::move(queue)) {}

FLKApplicationDelegate::~FLKApplicationDelegate() {
    window_.reset();
    synchronize(defaults_);
}

void FLKApplicationDelegate::applicationDidFinishLaunching() {
    // Without the resource the settings read as unset: no welcome screen, but the program runs.
    flk::loadDefaults(defaults_);
    flk::incrementLaunchCount(defaults_);
    // Counted on disk now, so a crash later does not make the next launch a first one again.
    synchronize(defaults_);

    window_ = std::make_unique<FLKMainWindow>();
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    window_->resize(kDefaultWindowSize.boundedTo(available.size()));
    if (flk::isFirstLaunch(defaults_)) {
        QRect frame(QPoint(), window_->size());
        frame.moveCenter(available.center());
        window_->move(frame.topLeft());
    }
    window_->show();
    window_->raise();
    window_->activateWindow();
    window_->startLaunchSequence(defaults_, queue_);
}

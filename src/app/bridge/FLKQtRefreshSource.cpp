#include "app/bridge/FLKQtRefreshSource.h"

#include <algorithm>

#include "core/platform/FLKPerformanceSettings.h"

namespace {
unsigned previewRate() { return std::max(1u, FLKPerformanceSettings::globalSettings().fps()); }
}  // namespace

FLKQtRefreshSource::FLKQtRefreshSource(QObject* context) : timer_(new QTimer(context)) {
    timer_->setTimerType(Qt::PreciseTimer);
}

int FLKQtRefreshSource::open() { return timer_ ? 0 : -1; }

FLKRefreshSource::Period FLKQtRefreshSource::nominalRefreshPeriod() const {
    return {1, static_cast<int32_t>(previewRate())};
}

void FLKQtRefreshSource::start(Callback callback) {
    if (!timer_) return;
    QObject::connect(timer_, &QTimer::timeout, timer_, std::move(callback));
    timer_->start(static_cast<int>(1000 / previewRate()));
}

void FLKQtRefreshSource::stop() {
    if (timer_) timer_->stop();
}

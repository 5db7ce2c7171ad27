#include "core/capture/FLKDeviceFinder.h"

#include <algorithm>

#include "core/capture/FLKAdbDeviceProvider.h"
#include "core/capture/FLKScreenDeviceProvider.h"
#include "core/capture/FLKV4L2DeviceProvider.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKTimer.h"

FLKDeviceFinder& FLKDeviceFinder::globalFinder() {
    // Never destroyed: its watcher threads stop only with the process.
    static auto* finder = makeWithSystemSources(FLKMainQueue::main()).release();
    return *finder;
}

std::unique_ptr<FLKDeviceFinder> FLKDeviceFinder::makeWithSystemSources(std::shared_ptr<FLKMainQueue> queue) {
    return std::make_unique<FLKDeviceFinder>(
        std::vector<std::shared_ptr<FLKDeviceProvider>>{std::make_shared<FLKAdbDeviceProvider>(),
                                                        std::make_shared<FLKV4L2DeviceProvider>()},
        std::vector<std::shared_ptr<FLKDeviceProvider>>{std::make_shared<FLKScreenDeviceProvider>()}, std::move(queue));
}

FLKDeviceFinder::FLKDeviceFinder(std::vector<std::shared_ptr<FLKDeviceProvider>> mobileProviders,
                                 std::vector<std::shared_ptr<FLKDeviceProvider>> displayProviders,
                                 std::shared_ptr<FLKMainQueue> queue)
    : mobileProviders_(std::move(mobileProviders)),
      displayProviders_(std::move(displayProviders)),
      queue_(queue ? std::move(queue) : FLKMainQueue::main()),
      self_(std::make_shared<FLKDeviceFinder*>(this)) {}

FLKDeviceFinder::~FLKDeviceFinder() {
    stopWatching();
    if (deferredNotifyTimer_) deferredNotifyTimer_->invalidate();
}

void FLKDeviceFinder::stopWatching() {
    for (auto& provider : mobileProviders_) provider->stopWatching();
    for (auto& provider : displayProviders_) provider->stopWatching();
}

void FLKDeviceFinder::findDevices() {
    installConnectionHandlers();
    deferredCheckAndNotifyAllDevices();
}

void FLKDeviceFinder::installConnectionHandlers() {
    std::weak_ptr<FLKDeviceFinder*> weak = self_;
    auto onMainQueue = [weak, queue = queue_](void (FLKDeviceFinder::*handler)()) {
        return [weak, queue, handler] {
            queue->post([weak, handler] {
                if (auto self = weak.lock()) ((*self)->*handler)();
            });
        };
    };
    for (auto& provider : mobileProviders_) provider->startWatching(onMainQueue(&FLKDeviceFinder::onDeviceConnected));
    for (auto& provider : displayProviders_) provider->startWatching(onMainQueue(&FLKDeviceFinder::onScreenDidChange));
}

void FLKDeviceFinder::addObserver(const std::shared_ptr<FLKDeviceFinderObserver>& observer) {
    observers_.erase(std::remove_if(observers_.begin(), observers_.end(), [](const auto& w) { return w.expired(); }),
                     observers_.end());
    bool present = std::any_of(observers_.begin(), observers_.end(),
                               [&](const auto& w) { return w.lock() == observer; });
    if (!present) observers_.push_back(observer);
    checkAndNotifyAllDevices();
}

void FLKDeviceFinder::removeObserver(const std::shared_ptr<FLKDeviceFinderObserver>& observer) {
    observers_.erase(std::remove_if(observers_.begin(), observers_.end(),
                                    [&](const auto& w) { return w.expired() || w.lock() == observer; }),
                     observers_.end());
}

std::vector<std::shared_ptr<FLKDevice>> FLKDeviceFinder::currentDevices() const {
    std::vector<std::shared_ptr<FLKDevice>> devices;
    for (const auto* providers : {&mobileProviders_, &displayProviders_}) {
        for (const auto& provider : *providers) {
            auto some = provider->devices();
            devices.insert(devices.end(), some.begin(), some.end());
        }
    }
    return devices;
}

bool FLKDeviceFinder::isDeviceAvailable(const FLKDevice& device) const {
    auto devices = currentDevices();
    return std::any_of(devices.begin(), devices.end(), [&](const auto& d) { return *d == device; });
}

void FLKDeviceFinder::checkAndNotifyAllDevices() {
    deferredNotifyTimer_.reset();
    auto devices = currentDevices();
    // A copy: an observer may add or remove observers while hearing the news.
    auto observers = observers_;
    for (const auto& weak : observers) {
        if (auto observer = weak.lock()) observer->deviceFinderDidUpdateWithDevices(*this, devices);
    }
}

void FLKDeviceFinder::deferredCheckAndNotifyAllDevices() {
    if (deferredNotifyTimer_) deferredNotifyTimer_->invalidate();
    std::weak_ptr<FLKDeviceFinder*> weak = self_;
    deferredNotifyTimer_ = FLKTimer::scheduledTimer(
        kNotifyDelay, false,
        [weak](FLKTimer& timer) {
            auto self = weak.lock();
            if (self && (*self)->deferredNotifyTimer_.get() == &timer) (*self)->checkAndNotifyAllDevices();
        },
        queue_);
}

void FLKDeviceFinder::onDeviceConnected() { deferredCheckAndNotifyAllDevices(); }
void FLKDeviceFinder::onDeviceDisconnected() { deferredCheckAndNotifyAllDevices(); }
void FLKDeviceFinder::onScreenDidChange() { deferredCheckAndNotifyAllDevices(); }

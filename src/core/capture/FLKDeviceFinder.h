#pragma once

#include <memory>
#include <vector>

#include "core/capture/FLKDevice.h"
#include "core/capture/FLKDeviceFinderObserver.h"
#include "core/capture/FLKDeviceProvider.h"

class FLKMainQueue;
class FLKTimer;

// The one place that knows which sources exist. It watches them come and
// go and tells its observers the whole current list, once a burst of
// changes has been quiet for a second. Main thread only.
class FLKDeviceFinder {
public:
    // Seconds of quiet after the last change before observers hear of it.
    static constexpr double kNotifyDelay = 1.0;

    // Phones over adb and capture nodes, then the X display's monitors.
    static FLKDeviceFinder& globalFinder();
    // A finder of its own over the same sources, on `queue` (the command line's run loop).
    static std::unique_ptr<FLKDeviceFinder> makeWithSystemSources(std::shared_ptr<FLKMainQueue> queue);
    // A finder over the given sources; `queue` defaults to the main queue.
    FLKDeviceFinder(std::vector<std::shared_ptr<FLKDeviceProvider>> mobileProviders,
                    std::vector<std::shared_ptr<FLKDeviceProvider>> displayProviders,
                    std::shared_ptr<FLKMainQueue> queue = nullptr);
    ~FLKDeviceFinder();
    FLKDeviceFinder(const FLKDeviceFinder&) = delete;
    FLKDeviceFinder& operator=(const FLKDeviceFinder&) = delete;

    void findDevices();
    void installConnectionHandlers();
    // Held weakly; every observer, the new one included, hears the list at once.
    void addObserver(const std::shared_ptr<FLKDeviceFinderObserver>& observer);
    void removeObserver(const std::shared_ptr<FLKDeviceFinderObserver>& observer);
    // New wrappers on every call.
    std::vector<std::shared_ptr<FLKDevice>> currentDevices() const;
    bool isDeviceAvailable(const FLKDevice& device) const;
    void checkAndNotifyAllDevices();
    void deferredCheckAndNotifyAllDevices();

    void onDeviceConnected();
    void onDeviceDisconnected();
    void onScreenDidChange();

    bool hasPendingNotification() const { return deferredNotifyTimer_ != nullptr; }

private:
    void stopWatching();

    std::vector<std::shared_ptr<FLKDeviceProvider>> mobileProviders_;   // immutable
    std::vector<std::shared_ptr<FLKDeviceProvider>> displayProviders_;  // immutable
    std::shared_ptr<FLKMainQueue> queue_;                                // immutable
    std::vector<std::weak_ptr<FLKDeviceFinderObserver>> observers_;     // main thread
    std::shared_ptr<FLKTimer> deferredNotifyTimer_;                      // main thread
    // Provider threads post through this; it goes when the finder does.
    std::shared_ptr<FLKDeviceFinder*> self_;
};

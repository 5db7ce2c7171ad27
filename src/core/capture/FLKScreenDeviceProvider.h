#pragma once

#include <atomic>
#include <string>

#include "core/capture/FLKDeviceProvider.h"
#include "core/capture/FLKWatcherThread.h"

// The monitors of the X display ($DISPLAY unless named); RandR's change
// events are changes of the list.
class FLKScreenDeviceProvider : public FLKDeviceProvider {
public:
    explicit FLKScreenDeviceProvider(std::string displayName = {});
    ~FLKScreenDeviceProvider() override;
    std::vector<std::shared_ptr<FLKDevice>> devices() override;
    void startWatching(std::function<void()> changed) override;
    void stopWatching() override;
    // Whether the display now sends the watcher its changes.
    bool isWatchingEvents() const { return watchingEvents_; }

private:
    const std::string displayName_;
    FLKWatcherThread watcher_;
    std::atomic<bool> watchingEvents_ = false;  // set by the watcher thread
};

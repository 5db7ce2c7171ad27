#pragma once

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

private:
    const std::string displayName_;
    FLKWatcherThread watcher_;
};

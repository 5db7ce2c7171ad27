#pragma once

#include "core/capture/FLKDeviceProvider.h"
#include "core/capture/FLKWatcherThread.h"

// Capture cards and cameras (/dev/video* capture nodes); udev's
// video4linux events are changes of the list.
class FLKV4L2DeviceProvider : public FLKDeviceProvider {
public:
    ~FLKV4L2DeviceProvider() override;
    std::vector<std::shared_ptr<FLKDevice>> devices() override;
    void startWatching(std::function<void()> changed) override;
    void stopWatching() override;

private:
    FLKWatcherThread watcher_;
};

#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "core/capture/FLKDevice.h"

// One kind of source the finder lists: phones over adb, capture nodes, monitors.
class FLKDeviceProvider {
public:
    virtual ~FLKDeviceProvider() = default;
    // New wrappers for the sources there are now.
    virtual std::vector<std::shared_ptr<FLKDevice>> devices() = 0;
    // Calls `changed` from any thread after sources come or go; a second call changes nothing.
    virtual void startWatching(std::function<void()> changed) = 0;
    // No call of `changed` starts after this returns.
    virtual void stopWatching() = 0;
};

#pragma once

#include <memory>
#include <vector>

class FLKDevice;
class FLKDeviceFinder;

class FLKDeviceFinderObserver {
public:
    virtual ~FLKDeviceFinderObserver() = default;
    // The complete list of sources, phones and capture nodes first, then monitors.
    virtual void deviceFinderDidUpdateWithDevices(FLKDeviceFinder& finder,
                                                  const std::vector<std::shared_ptr<FLKDevice>>& devices) = 0;
};

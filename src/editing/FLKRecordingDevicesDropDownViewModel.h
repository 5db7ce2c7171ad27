#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "core/capture/FLKDeviceFinderObserver.h"
#include "editing/FLKPropertyObservable.h"
#include "editing/FLKRecordingDevicesDropDownItemViewModel.h"

class FLKDeviceFinder;

// The recording inspector's device drop-down: "No Device" first, then every
// source the finder lists. Observers hear "itemViewModels", "currentDevice",
// "currentDeviceIndex" and "enabled". Main thread only.
class FLKRecordingDevicesDropDownViewModel : public FLKPropertyObservable,
                                             public FLKDeviceFinderObserver,
                                             public std::enable_shared_from_this<FLKRecordingDevicesDropDownViewModel> {
public:
    static constexpr size_t kNotFound = static_cast<size_t>(INT64_MAX);

    // Observes the finder (the shared one unless given) and asks it to find devices.
    static std::shared_ptr<FLKRecordingDevicesDropDownViewModel> make(std::string identifier,
                                                                      FLKDeviceFinder* finder = nullptr);

    void deviceFinderDidUpdateWithDevices(FLKDeviceFinder& finder,
                                          const std::vector<std::shared_ptr<FLKDevice>>& devices) override;
    size_t indexOfDevice(const std::shared_ptr<FLKDevice>& device) const;
    // An index out of range (or not found) selects "No Device".
    void setCurrentDeviceIndex(size_t index);
    void deselectDevice() { setCurrentDeviceIndex(0); }
    // Whether the finder lists the device now.
    bool hasDevice(const FLKDevice& device) const;

    const std::string& identifier() const { return identifier_; }
    const std::vector<FLKRecordingDevicesDropDownItemViewModel>& itemViewModels() const { return itemViewModels_; }
    const std::shared_ptr<FLKDevice>& currentDevice() const { return currentDevice_; }
    size_t currentDeviceIndex() const { return currentDeviceIndex_; }
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);

private:
    FLKRecordingDevicesDropDownViewModel(std::string identifier, FLKDeviceFinder& finder);

    std::string identifier_;
    FLKDeviceFinder& deviceFinder_;
    std::vector<FLKRecordingDevicesDropDownItemViewModel> itemViewModels_;
    std::shared_ptr<FLKDevice> currentDevice_;
    size_t currentDeviceIndex_ = kNotFound;
    bool enabled_ = true;
};

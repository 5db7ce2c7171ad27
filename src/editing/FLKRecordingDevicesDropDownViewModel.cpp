#include "editing/FLKRecordingDevicesDropDownViewModel.h"

#include "core/capture/FLKDeviceFinder.h"

std::shared_ptr<FLKRecordingDevicesDropDownViewModel> FLKRecordingDevicesDropDownViewModel::make(
    std::string identifier, FLKDeviceFinder* finder) {
    auto& source = finder ? *finder : FLKDeviceFinder::globalFinder();
    std::shared_ptr<FLKRecordingDevicesDropDownViewModel> model(
        new FLKRecordingDevicesDropDownViewModel(std::move(identifier), source));
    source.addObserver(model);
    source.findDevices();
    return model;
}

FLKRecordingDevicesDropDownViewModel::FLKRecordingDevicesDropDownViewModel(std::string identifier,
                                                                           FLKDeviceFinder& finder)
    : identifier_(std::move(identifier)), deviceFinder_(finder) {}

void FLKRecordingDevicesDropDownViewModel::deviceFinderDidUpdateWithDevices(
    FLKDeviceFinder&, const std::vector<std::shared_ptr<FLKDevice>>& devices) {
    std::vector<FLKRecordingDevicesDropDownItemViewModel> items{
        FLKRecordingDevicesDropDownItemViewModel::noDeviceSelectedItem()};
    for (const auto& device : devices) items.push_back(FLKRecordingDevicesDropDownItemViewModel::itemWithDevice(device));
    itemViewModels_ = std::move(items);
    didChangeProperty("itemViewModels");
    if (currentDevice_) {
        // A device that has gone falls back to "No Device".
        setCurrentDeviceIndex(indexOfDevice(currentDevice_));
    } else {
        currentDevice_ = itemViewModels_.front().device;
    }
}

size_t FLKRecordingDevicesDropDownViewModel::indexOfDevice(const std::shared_ptr<FLKDevice>& device) const {
    for (size_t i = 0; i < itemViewModels_.size(); ++i) {
        if (FLKDeviceEqual{}(itemViewModels_[i].device, device)) return i;
    }
    return kNotFound;
}

void FLKRecordingDevicesDropDownViewModel::setCurrentDeviceIndex(size_t index) {
    if (index == kNotFound || index >= itemViewModels_.size()) index = 0;
    currentDeviceIndex_ = index;
    didChangeProperty("currentDeviceIndex");
    if (itemViewModels_.empty()) return;
    const auto& device = itemViewModels_[index].device;
    if (!FLKDeviceEqual{}(device, currentDevice_)) {
        currentDevice_ = device;
        didChangeProperty("currentDevice");
    }
}

bool FLKRecordingDevicesDropDownViewModel::hasDevice(const FLKDevice& device) const {
    return deviceFinder_.isDeviceAvailable(device);
}

void FLKRecordingDevicesDropDownViewModel::setEnabled(bool enabled) {
    enabled_ = enabled;
    didChangeProperty("enabled");
}

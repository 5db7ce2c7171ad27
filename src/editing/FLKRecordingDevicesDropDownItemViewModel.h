#pragma once

#include <memory>
#include <string>

#include "core/capture/FLKDevice.h"

// One entry of the device drop-down: a source, or none ("No Device").
struct FLKRecordingDevicesDropDownItemViewModel {
    std::shared_ptr<FLKDevice> device;  // null for the no-device entry
    std::string title;
    bool isEnabled = true;  // false for phones that cannot be recorded yet

    static FLKRecordingDevicesDropDownItemViewModel noDeviceSelectedItem() { return {nullptr, "No Device", true}; }
    static FLKRecordingDevicesDropDownItemViewModel itemWithDevice(const std::shared_ptr<FLKDevice>& device) {
        std::string title = device->name() ? *device->name() : device->uniqueIdentifier();
        if (!device->isChoosable()) title += " (" + FLKDevice::stateName(device->state()) + ")";
        return {device, title, device->isChoosable()};
    }
};

#pragma once

#include <memory>
#include <mutex>

#include "core/capture/FLKAdbDeviceList.h"
#include "core/capture/FLKDevice.h"
#include "core/capture/FLKV4L2Node.h"

// A phone reached through adb, or a capture card or camera showing one
// (a V4L2 capture node).
class FLKMobileDevice : public FLKDevice {
public:
    explicit FLKMobileDevice(FLKAdbDeviceEntry entry);
    explicit FLKMobileDevice(FLKV4L2Node node);

    std::optional<std::string> name() const override { return name_; }
    std::shared_ptr<FLKCaptureInput> captureInput() override;
    std::string uniqueIdentifier() const override { return uniqueIdentifier_; }
    double minFrameDuration() override;
    std::string kind() const override { return kind_; }
    State state() const override { return state_; }

    // The adb serial or the node's path.
    const std::string& address() const { return address_; }

private:
    std::string kind_;
    std::string name_;
    std::string uniqueIdentifier_;
    std::string address_;
    State state_ = State::ready;
    std::mutex inputMutex_;
    std::shared_ptr<FLKCaptureInput> captureInput_;  // guarded by inputMutex_
};

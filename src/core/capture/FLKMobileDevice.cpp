#include "core/capture/FLKMobileDevice.h"

#include "core/capture/FLKAVDeviceCaptureInput.h"
#include "core/capture/FLKAdbCaptureInput.h"

FLKMobileDevice::FLKMobileDevice(FLKAdbDeviceEntry entry)
    : kind_("adb"), name_(entry.displayName()), uniqueIdentifier_(entry.serial), address_(entry.serial) {
    if (entry.state == "unauthorized") state_ = State::unauthorized;
    else if (!entry.isReady()) state_ = State::offline;
}

FLKMobileDevice::FLKMobileDevice(FLKV4L2Node node)
    : kind_("v4l2"), name_(node.card), uniqueIdentifier_(node.uniqueIdentifier()), address_(node.path.string()) {}

std::shared_ptr<FLKCaptureInput> FLKMobileDevice::captureInput() {
    std::lock_guard lock(inputMutex_);
    if (captureInput_ || state_ != State::ready) return captureInput_;
    if (kind_ == "adb") {
        captureInput_ = std::make_shared<FLKAdbCaptureInput>(address_);
    } else {
        FLKAVDeviceCaptureInput::Source source;
        source.format = "v4l2";
        source.url = address_;
        std::string path = address_;
        source.isGone = [path] { return !FLKV4L2Node::probe(path); };
        captureInput_ = std::make_shared<FLKAVDeviceCaptureInput>(std::move(source));
    }
    return captureInput_;
}

double FLKMobileDevice::minFrameDuration() {
    auto input = captureInput();
    return input ? input->minFrameDuration() : 0;
}

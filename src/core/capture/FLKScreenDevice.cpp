#include "core/capture/FLKScreenDevice.h"

#include <cstdlib>

#include "core/capture/FLKAVDeviceCaptureInput.h"
#include "core/capture/FLKMainWindowLocating.h"

namespace {
std::mutex locatorMutex;
std::shared_ptr<FLKMainWindowLocating> installedLocator;  // guarded by locatorMutex
}  // namespace

FLKScreenDevice::FLKScreenDevice(FLKX11Monitor monitor, std::string displayName)
    : monitor_(std::move(monitor)), displayName_(std::move(displayName)) {}

void FLKScreenDevice::setMainWindowLocator(std::shared_ptr<FLKMainWindowLocating> locator) {
    std::lock_guard lock(locatorMutex);
    installedLocator = std::move(locator);
}

std::shared_ptr<FLKCaptureInput> FLKScreenDevice::captureInput() {
    std::lock_guard lock(inputMutex_);
    if (captureInput_) return captureInput_;
    FLKAVDeviceCaptureInput::Source source;
    source.format = "x11grab";
    std::string display = displayName_;
    if (display.empty()) {
        const char* env = std::getenv("DISPLAY");
        display = env ? env : "";
    }
    source.url = display + "+" + std::to_string(monitor_.x) + "," + std::to_string(monitor_.y);
    source.options = {{"video_size", std::to_string(monitor_.width) + "x" + std::to_string(monitor_.height)},
                      {"framerate", std::to_string(static_cast<int>(kFrameRate))},
                      {"draw_mouse", "1"}};
    source.frameRate = kFrameRate;
    std::string identifier = monitor_.uniqueIdentifier;
    source.isGone = [display, identifier] {
        auto monitors = FLKX11Monitor::list(display);
        if (!monitors) return true;
        for (const auto& monitor : *monitors) {
            if (monitor.uniqueIdentifier == identifier) return false;
        }
        return true;
    };
    captureInput_ = std::make_shared<FLKAVDeviceCaptureInput>(std::move(source));
    return captureInput_;
}

double FLKScreenDevice::minFrameDuration() { return 1.0 / kFrameRate; }

bool FLKScreenDevice::isShowingApp() const {
    std::shared_ptr<FLKMainWindowLocating> locator;
    {
        std::lock_guard lock(locatorMutex);
        locator = installedLocator;
    }
    auto frame = locator ? locator->mainWindowFrame() : std::nullopt;
    if (!frame) return false;
    double cx = frame->origin.x + frame->size.width / 2;
    double cy = frame->origin.y + frame->size.height / 2;
    return cx >= monitor_.x && cx < monitor_.x + monitor_.width && cy >= monitor_.y && cy < monitor_.y + monitor_.height;
}

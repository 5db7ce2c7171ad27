#pragma once

#include <memory>
#include <mutex>

#include "core/capture/FLKDevice.h"
#include "core/capture/FLKX11Monitor.h"

class FLKMainWindowLocating;

// One monitor of the X display this program runs on.
class FLKScreenDevice : public FLKDevice {
public:
    FLKScreenDevice(FLKX11Monitor monitor, std::string displayName);

    std::optional<std::string> name() const override { return monitor_.name; }
    std::shared_ptr<FLKCaptureInput> captureInput() override;
    std::string uniqueIdentifier() const override { return monitor_.uniqueIdentifier; }
    double minFrameDuration() override;
    bool isShowingApp() const override;
    std::string kind() const override { return "display"; }

    const FLKX11Monitor& monitor() const { return monitor_; }

    // Frames a second the monitor is grabbed at.
    static constexpr double kFrameRate = 30;
    // Installed by the desktop program; without it no monitor shows the app.
    static void setMainWindowLocator(std::shared_ptr<FLKMainWindowLocating> locator);

private:
    FLKX11Monitor monitor_;
    std::string displayName_;
    std::mutex inputMutex_;
    std::shared_ptr<FLKCaptureInput> captureInput_;  // guarded by inputMutex_
};

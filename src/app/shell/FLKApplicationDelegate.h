#pragma once

#include <memory>

class FLKMainQueue;
class FLKMainWindow;
class FLKUserDefaults;

// What happens once Qt and the core's GL are up: the user defaults loaded and
// this launch counted, the main window shown (centred on the very first
// launch only, elsewhere where the window system puts it) and its launch
// sequence started. Owns the main window. Main thread only.
class FLKApplicationDelegate {
public:
    // Both must outlive the delegate; the launch sequence runs on `queue`.
    FLKApplicationDelegate(FLKUserDefaults& defaults, std::shared_ptr<FLKMainQueue> queue);
    ~FLKApplicationDelegate();
    FLKApplicationDelegate(const FLKApplicationDelegate&) = delete;
    FLKApplicationDelegate& operator=(const FLKApplicationDelegate&) = delete;

    void applicationDidFinishLaunching();

    // Null before launch.
    FLKMainWindow* window() const { return window_.get(); }

private:
    FLKUserDefaults& defaults_;
    std::shared_ptr<FLKMainQueue> queue_;
    std::unique_ptr<FLKMainWindow> window_;
};

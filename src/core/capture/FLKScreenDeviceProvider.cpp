#include "core/capture/FLKScreenDeviceProvider.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include "core/capture/FLKScreenDevice.h"

FLKScreenDeviceProvider::FLKScreenDeviceProvider(std::string displayName) : displayName_(std::move(displayName)) {}

FLKScreenDeviceProvider::~FLKScreenDeviceProvider() { stopWatching(); }

std::vector<std::shared_ptr<FLKDevice>> FLKScreenDeviceProvider::devices() {
    std::vector<std::shared_ptr<FLKDevice>> devices;
    auto monitors = FLKX11Monitor::list(displayName_);
    if (!monitors) return devices;
    for (auto& monitor : *monitors) devices.push_back(std::make_shared<FLKScreenDevice>(std::move(monitor), displayName_));
    return devices;
}

void FLKScreenDeviceProvider::startWatching(std::function<void()> changed) {
    if (watcher_.isRunning()) return;
    std::string name = displayName_;
    watcher_.start([this, name, changed = std::move(changed)](FLKWatcherThread& thread) {
        // A connection of its own: Xlib connections are not shared between threads here.
        Display* display = XOpenDisplay(name.empty() ? nullptr : name.c_str());
        if (!display) return;
        int eventBase = 0;
        int errorBase = 0;
        if (XRRQueryExtension(display, &eventBase, &errorBase)) {
            const Window root = DefaultRootWindow(display);
            XRRSelectInput(display, root,
                           RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask | RROutputChangeNotifyMask |
                               RRResourceChangeNotifyMask);
            // A monitor set or deleted by a client (xrandr --setmonitor) comes
            // only as the root window's ConfigureNotify, no RandR event.
            XSelectInput(display, root, StructureNotifyMask);
            XSync(display, False);
            watchingEvents_ = true;
            while (thread.wait(ConnectionNumber(display))) {
                bool relevant = false;
                while (XPending(display)) {
                    XEvent event;
                    XNextEvent(display, &event);
                    XRRUpdateConfiguration(&event);
                    relevant |= event.type == eventBase + RRScreenChangeNotify || event.type == eventBase + RRNotify ||
                                (event.type == ConfigureNotify && event.xconfigure.window == root);
                }
                if (relevant) changed();
            }
        }
        XCloseDisplay(display);
    });
}

void FLKScreenDeviceProvider::stopWatching() {
    watcher_.stop();
    watchingEvents_ = false;
}

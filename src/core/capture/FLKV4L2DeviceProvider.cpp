#include "core/capture/FLKV4L2DeviceProvider.h"

#include <libudev.h>

#include "core/capture/FLKMobileDevice.h"

FLKV4L2DeviceProvider::~FLKV4L2DeviceProvider() { stopWatching(); }

std::vector<std::shared_ptr<FLKDevice>> FLKV4L2DeviceProvider::devices() {
    std::vector<std::shared_ptr<FLKDevice>> devices;
    for (auto& node : FLKV4L2Node::list()) devices.push_back(std::make_shared<FLKMobileDevice>(std::move(node)));
    return devices;
}

void FLKV4L2DeviceProvider::startWatching(std::function<void()> changed) {
    if (watcher_.isRunning()) return;
    watcher_.start([changed = std::move(changed)](FLKWatcherThread& thread) {
        // Without udev (containers) there is no hot-plug; the list is still read on demand.
        udev* context = udev_new();
        if (!context) return;
        udev_monitor* monitor = udev_monitor_new_from_netlink(context, "udev");
        if (monitor && udev_monitor_filter_add_match_subsystem_devtype(monitor, "video4linux", nullptr) >= 0 &&
            udev_monitor_enable_receiving(monitor) >= 0) {
            int fd = udev_monitor_get_fd(monitor);
            while (thread.wait(fd)) {
                bool any = false;
                while (udev_device* device = udev_monitor_receive_device(monitor)) {
                    udev_device_unref(device);
                    any = true;
                }
                if (any) changed();
            }
        }
        if (monitor) udev_monitor_unref(monitor);
        udev_unref(context);
    });
}

void FLKV4L2DeviceProvider::stopWatching() { watcher_.stop(); }

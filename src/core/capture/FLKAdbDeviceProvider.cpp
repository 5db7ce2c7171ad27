#include "core/capture/FLKAdbDeviceProvider.h"

#include "core/capture/FLKAdb.h"
#include "core/capture/FLKMobileDevice.h"
#include "core/capture/FLKSubprocess.h"

namespace {
// How long to wait before asking adb again after track-devices ended or could not start.
constexpr int kRetryMilliseconds = 3000;
}  // namespace

FLKAdbDeviceProvider::~FLKAdbDeviceProvider() { stopWatching(); }

std::vector<std::shared_ptr<FLKDevice>> FLKAdbDeviceProvider::devices() {
    std::optional<std::vector<FLKAdbDeviceEntry>> entries;
    {
        std::lock_guard lock(mutex_);
        entries = tracked_;
    }
    // While watching, only the watcher runs adb: here it could hold the caller
    // (the UI thread) for seconds while adb starts its server. Until the
    // tracker's first list, the last listing made before watching stands.
    if (!watcher_.isRunning()) {
        entries = flk::adb::listDevices();
        std::lock_guard lock(mutex_);
        tracked_ = entries;
    }
    std::vector<std::shared_ptr<FLKDevice>> devices;
    if (entries) {
        for (const auto& entry : *entries) devices.push_back(std::make_shared<FLKMobileDevice>(entry));
    }
    return devices;
}

void FLKAdbDeviceProvider::startWatching(std::function<void()> changed) {
    if (watcher_.isRunning()) return;
    watcher_.start([this, changed = std::move(changed)](FLKWatcherThread& thread) { track(thread, changed); });
}

void FLKAdbDeviceProvider::stopWatching() {
    watcher_.stop();
    std::lock_guard lock(mutex_);
    tracked_.reset();
}

void FLKAdbDeviceProvider::track(FLKWatcherThread& thread, const std::function<void()>& changed) {
    while (!thread.stopping()) {
        std::string adb = flk::adb::program();
        FLKSubprocess process;
        if (!adb.empty() && process.start({adb, "track-devices", "-l"})) {
            std::string buffer;
            char chunk[4096];
            while (thread.wait(process.outputDescriptor())) {
                ssize_t n = process.read(chunk, sizeof chunk);
                if (n <= 0) break;
                buffer.append(chunk, static_cast<size_t>(n));
                std::vector<std::string> payloads;
                if (!flk::adb::takeTrackDevicesBlocks(buffer, &payloads)) break;
                if (payloads.empty()) continue;
                {
                    std::lock_guard lock(mutex_);
                    tracked_ = flk::adb::parseDevices(payloads.back());
                }
                changed();
            }
            process.terminate();
        }
        if (thread.stopping()) break;
        // Without a running tracker the list is asked for afresh at each retry.
        auto listed = adb.empty() ? std::nullopt : flk::adb::listDevices();
        {
            std::lock_guard lock(mutex_);
            tracked_ = std::move(listed);
        }
        changed();
        thread.wait(-1, kRetryMilliseconds);
    }
}

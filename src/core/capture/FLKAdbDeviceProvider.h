#pragma once

#include <mutex>
#include <optional>

#include "core/capture/FLKAdbDeviceList.h"
#include "core/capture/FLKDeviceProvider.h"
#include "core/capture/FLKWatcherThread.h"

// Phones adb sees. While watching, `adb track-devices -l` keeps the list
// current without running adb for each listing.
class FLKAdbDeviceProvider : public FLKDeviceProvider {
public:
    ~FLKAdbDeviceProvider() override;
    std::vector<std::shared_ptr<FLKDevice>> devices() override;
    void startWatching(std::function<void()> changed) override;
    void stopWatching() override;

private:
    void track(FLKWatcherThread& thread, const std::function<void()>& changed);

    std::mutex mutex_;
    std::optional<std::vector<FLKAdbDeviceEntry>> tracked_;  // guarded by mutex_; the tracker's last list, or the last listing
    FLKWatcherThread watcher_;
};

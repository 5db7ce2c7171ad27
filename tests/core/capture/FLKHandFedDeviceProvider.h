#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "core/capture/FLKDeviceProvider.h"
#include "core/capture/FLKMobileDevice.h"
#include "core/capture/FLKScreenDevice.h"

namespace flk::test {

// Sources the test adds and removes by hand, announcing changes as a watcher thread would.
class HandFedDeviceProvider : public FLKDeviceProvider {
public:
    explicit HandFedDeviceProvider(bool displays) : displays_(displays) {}
    std::vector<std::shared_ptr<FLKDevice>> devices() override {
        std::vector<std::shared_ptr<FLKDevice>> out;
        for (size_t i = 0; i < ids_.size(); ++i) {
            const auto& id = ids_[i];
            if (displays_) {
                FLKX11Monitor monitor;
                monitor.name = "Monitor " + id;
                monitor.uniqueIdentifier = "display:" + id;
                out.push_back(std::make_shared<FLKScreenDevice>(monitor, ":99"));
            } else {
                out.push_back(std::make_shared<FLKMobileDevice>(FLKAdbDeviceEntry{id, states_[i], "Phone_" + id, "", ""}));
            }
        }
        return out;
    }
    void startWatching(std::function<void()> changed) override {
        ++watchCalls;
        changed_ = std::move(changed);
    }
    void stopWatching() override { changed_ = nullptr; }

    void add(const std::string& id, const std::string& state = "device") {
        ids_.push_back(id);
        states_.push_back(state);
        if (changed_) changed_();
    }
    void remove(const std::string& id) {
        auto it = std::find(ids_.begin(), ids_.end(), id);
        if (it == ids_.end()) return;
        states_.erase(states_.begin() + (it - ids_.begin()));
        ids_.erase(it);
        if (changed_) changed_();
    }
    int watchCalls = 0;

private:
    bool displays_;
    std::vector<std::string> ids_;
    std::vector<std::string> states_;
    std::function<void()> changed_;
};

}  // namespace flk::test

#include "cli/CaptureSupport.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "core/capture/FLKAdb.h"
#include "core/capture/FLKDevice.h"
#include "core/capture/FLKX11Monitor.h"
#include "core/platform/FLKRunLoopMainQueue.h"

namespace {
std::mutex handlerMutex;
std::function<void()> signalHandler;  // guarded by handlerMutex
}  // namespace

std::shared_ptr<FLKRunLoopMainQueue> flk::cli::captureRunLoop(std::function<void()> onSignal) {
    auto queue = std::make_shared<FLKRunLoopMainQueue>();
    FLKMainQueue::setMain(queue);
    {
        std::lock_guard lock(handlerMutex);
        signalHandler = std::move(onSignal);
    }
    static std::once_flag started;
    std::call_once(started, [] {
        // The signals are taken by a thread of their own with sigwait, so the
        // handler may do anything; every later thread inherits the blocked mask.
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGINT);
        sigaddset(&set, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
        std::thread([set] {
            for (;;) {
                int signal = 0;
                if (sigwait(&set, &signal) != 0) continue;
                std::function<void()> handler;
                {
                    std::lock_guard lock(handlerMutex);
                    handler = signalHandler;
                }
                if (handler) FLKMainQueue::main()->post(handler);
            }
        }).detach();
    });
    return queue;
}

void flk::cli::stopMainRunLoop() {
    if (auto queue = std::dynamic_pointer_cast<FLKRunLoopMainQueue>(FLKMainQueue::main())) queue->stop();
}

FLKJSON flk::cli::deviceJSON(FLKDevice& device) {
    return {{"kind", device.kind()},
            {"name", device.name() ? FLKJSON(*device.name()) : FLKJSON()},
            {"identifier", device.uniqueIdentifier()},
            {"state", FLKDevice::stateName(device.state())}};
}

std::string flk::cli::deviceLine(FLKDevice& device) {
    char line[512];
    std::snprintf(line, sizeof line, "%-8s %-13s %-28s %s", device.kind().c_str(),
                  FLKDevice::stateName(device.state()).c_str(), device.uniqueIdentifier().c_str(),
                  device.name() ? device.name()->c_str() : "(no name)");
    return line;
}

std::vector<std::string> flk::cli::missingSourceNotes() {
    std::vector<std::string> notes;
    if (flk::adb::program().empty()) {
        notes.push_back("adb was not found, so phones are not listed: install it (Debian package \"adb\") or set "
                        "FLICKWELL_ADB.");
    }
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display || !FLKX11Monitor::list(std::string())) {
        notes.push_back("No X display (DISPLAY is not set or cannot be opened), so no monitor is listed.");
    }
    return notes;
}

#include "core/capture/FLKCaptureInput.h"

#include <chrono>

FLKCaptureInput::~FLKCaptureInput() {
    // Subclasses stop in their own destructors; this only guards a forgotten thread.
    if (thread_.joinable()) {
        stopping_ = true;
        thread_.join();
    }
}

double FLKCaptureInput::monotonicNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool FLKCaptureInput::start(Handlers handlers, FLKError* error) {
    std::lock_guard lock(lifecycleMutex_);
    if (running_) return true;
    stopping_ = false;
    failed_ = false;
    if (!open(error)) return false;
    handlers_ = std::move(handlers);
    running_ = true;
    thread_ = std::thread([this] {
        captureLoop();
    });
    return true;
}

void FLKCaptureInput::stop() {
    std::lock_guard lock(lifecycleMutex_);
    if (!running_) return;
    stopping_ = true;
    interrupt();
    if (thread_.joinable()) thread_.join();
    close();
    running_ = false;
    handlers_ = {};
}

void FLKCaptureInput::deliver(FLKCapturedFrame frame) {
    if (stopping_ || failed_ || !handlers_.frame) return;
    handlers_.frame(std::move(frame));
}

void FLKCaptureInput::fail(const FLKError& error) {
    if (stopping_ || failed_.exchange(true)) return;
    if (handlers_.error) handlers_.error(error);
}

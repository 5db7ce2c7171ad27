#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "core/capture/FLKCapturedFrame.h"
#include "core/platform/FLKError.h"

// Pictures of one device, produced on a thread of the input's own. Frames
// and the one error that ends capture reach the handlers on that thread.
class FLKCaptureInput {
public:
    struct Handlers {
        std::function<void(FLKCapturedFrame)> frame;
        std::function<void(const FLKError&)> error;
    };

    virtual ~FLKCaptureInput();
    FLKCaptureInput() = default;
    FLKCaptureInput(const FLKCaptureInput&) = delete;
    FLKCaptureInput& operator=(const FLKCaptureInput&) = delete;

    // Opens the device and starts the thread; false with the error set when it cannot.
    bool start(Handlers handlers, FLKError* error = nullptr);
    // Returns once the thread has ended; no handler runs afterwards.
    void stop();
    bool isRunning() const { return running_; }

    // Seconds between frames at the fastest the source goes.
    virtual double minFrameDuration() const = 0;
    // Whether a recording keeps the source's own H.264 packets rather than encoding the pictures.
    virtual bool deliversPackets() const { return false; }
    // Asks for a picture a recording can start on (a stream restarts its encoder).
    virtual void requestKeyFrame() {}

    // Seconds on the monotonic clock frames are stamped with.
    static double monotonicNow();

protected:
    // Runs on the caller of start(): opens what the thread will read.
    virtual bool open(FLKError* error) = 0;
    // The thread's body: deliver() frames until stopping() or a fatal error (fail()).
    virtual void captureLoop() = 0;
    // Unblocks captureLoop() after stopping() became true; any thread.
    virtual void interrupt() {}
    // Releases what open() took, after the thread ended.
    virtual void close() {}

    bool stopping() const { return stopping_; }
    void deliver(FLKCapturedFrame frame);
    // Reports the error once and ends delivery.
    void fail(const FLKError& error);

private:
    Handlers handlers_;                 // set before the thread starts, then read by it only
    std::thread thread_;                // start()/stop() caller only
    std::atomic<bool> stopping_ = false;
    std::atomic<bool> running_ = false;
    std::atomic<bool> failed_ = false;
    std::mutex lifecycleMutex_;         // serialises start() and stop()
};

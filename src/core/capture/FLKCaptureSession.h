#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "core/capture/FLKCapturedFrame.h"
#include "core/platform/FLKError.h"

class FLKCaptureInput;
class FLKMainQueue;

// Runs one capture input and hands its frames, and the error that may end
// it, to the main queue. Main thread only, except where noted.
class FLKCaptureSession : public std::enable_shared_from_this<FLKCaptureSession> {
public:
    using FrameHandler = std::function<void(const FLKCapturedFrame&)>;
    using ErrorHandler = std::function<void(const FLKError&)>;

    static std::shared_ptr<FLKCaptureSession> make(std::shared_ptr<FLKMainQueue> queue = nullptr);
    ~FLKCaptureSession();

    bool canAddInput(const std::shared_ptr<FLKCaptureInput>& input) const;
    void addInput(std::shared_ptr<FLKCaptureInput> input);
    const std::shared_ptr<FLKCaptureInput>& input() const { return input_; }
    // False with the error set when the input cannot start.
    bool startRunning(FLKError* error = nullptr);
    void stopRunning();
    bool isRunning() const;

    // Where frames go (the video data output); frames are dropped while disabled.
    void setFrameHandler(FrameHandler handler) { frameHandler_ = std::move(handler); }
    void setFrameHandlerEnabled(bool enabled) { frameHandlerEnabled_ = enabled; }
    bool isFrameHandlerEnabled() const { return frameHandlerEnabled_; }
    void setRuntimeErrorHandler(ErrorHandler handler) { errorHandler_ = std::move(handler); }

    // Frames handed to the main queue and not yet handled; any thread.
    int framesInFlight() const { return inFlight_; }
    // Pictures not shown because the main thread was behind; any thread.
    uint64_t picturesDropped() const { return dropped_; }
    // Beyond this many frames waiting for the main thread, pictures are dropped
    // (a kept stream's packets still go through, without their picture).
    static constexpr int kMaxFramesInFlight = 3;

private:
    explicit FLKCaptureSession(std::shared_ptr<FLKMainQueue> queue);

    std::shared_ptr<FLKMainQueue> queue_;        // immutable
    std::shared_ptr<FLKCaptureInput> input_;     // main thread
    FrameHandler frameHandler_;                  // main thread
    ErrorHandler errorHandler_;                  // main thread
    bool frameHandlerEnabled_ = true;            // main thread
    bool running_ = false;                       // main thread
    std::atomic<int> inFlight_ = 0;              // capture thread and main thread
    std::atomic<uint64_t> dropped_ = 0;          // capture thread; read anywhere
};

#include "core/capture/FLKCaptureSession.h"

#include "core/capture/FLKCaptureInput.h"
#include "core/platform/FLKMainQueue.h"

std::shared_ptr<FLKCaptureSession> FLKCaptureSession::make(std::shared_ptr<FLKMainQueue> queue) {
    return std::shared_ptr<FLKCaptureSession>(new FLKCaptureSession(queue ? std::move(queue) : FLKMainQueue::main()));
}

FLKCaptureSession::FLKCaptureSession(std::shared_ptr<FLKMainQueue> queue) : queue_(std::move(queue)) {}

FLKCaptureSession::~FLKCaptureSession() {
    if (running_ && input_) input_->stop();
}

bool FLKCaptureSession::canAddInput(const std::shared_ptr<FLKCaptureInput>& input) const {
    return input && !input_ && !input->isRunning();
}

void FLKCaptureSession::addInput(std::shared_ptr<FLKCaptureInput> input) {
    if (canAddInput(input)) input_ = std::move(input);
}

bool FLKCaptureSession::startRunning(FLKError* error) {
    if (running_ || !input_) return running_;
    std::weak_ptr<FLKCaptureSession> weak = weak_from_this();
    auto queue = queue_;
    FLKCaptureInput::Handlers handlers;
    handlers.frame = [weak, queue](FLKCapturedFrame frame) {
        auto self = weak.lock();
        if (!self) return;
        // A main thread that falls behind must not pile up pictures of megabytes each.
        if (self->inFlight_ >= kMaxFramesInFlight) {
            ++self->dropped_;
            if (frame.packets.empty()) return;
            frame.pixels.reset();
        }
        ++self->inFlight_;
        queue->post([weak, frame = std::move(frame)] {
            auto self = weak.lock();
            if (!self) return;
            --self->inFlight_;
            if (self->running_ && self->frameHandlerEnabled_ && self->frameHandler_) self->frameHandler_(frame);
        });
    };
    handlers.error = [weak, queue](const FLKError& error) {
        queue->post([weak, error] {
            auto self = weak.lock();
            if (self && self->running_ && self->errorHandler_) self->errorHandler_(error);
        });
    };
    running_ = input_->start(std::move(handlers), error);
    return running_;
}

void FLKCaptureSession::stopRunning() {
    if (!running_) return;
    running_ = false;
    input_->stop();
}

bool FLKCaptureSession::isRunning() const { return running_; }

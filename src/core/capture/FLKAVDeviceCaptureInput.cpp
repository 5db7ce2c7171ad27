#include "core/capture/FLKAVDeviceCaptureInput.h"

#include <mutex>

#include "core/capture/FLKCaptureDecoder.h"
#include "core/capture/FLKCaptureError.h"

extern "C" {
#include <libavdevice/avdevice.h>
}

int FLKAVDeviceCaptureInput::shouldInterrupt(void* self) {
    return static_cast<FLKAVDeviceCaptureInput*>(self)->stopping() ? 1 : 0;
}

FLKAVDeviceCaptureInput::FLKAVDeviceCaptureInput(Source source) : source_(std::move(source)) {
    static std::once_flag registered;
    std::call_once(registered, [] { avdevice_register_all(); });
}

FLKAVDeviceCaptureInput::~FLKAVDeviceCaptureInput() { stop(); }

bool FLKAVDeviceCaptureInput::open(FLKError* error) {
    const AVInputFormat* format = av_find_input_format(source_.format.c_str());
    if (!format) {
        flk::setError(error, flk::capture::captureFailedError("This FFmpeg has no " + source_.format + " grabber."));
        return false;
    }
    AVDictionary* options = nullptr;
    for (const auto& [key, value] : source_.options) av_dict_set(&options, key.c_str(), value.c_str(), 0);
    AVFormatContext* context = avformat_alloc_context();
    context->interrupt_callback = {shouldInterrupt, this};
    int rc = avformat_open_input(&context, source_.url.c_str(), format, &options);
    av_dict_free(&options);
    if (rc < 0) {
        std::string reason = "Cannot open " + source_.url + ": " + flk::media::avErrorText(rc);
        flk::setError(error, source_.isGone && source_.isGone() ? flk::capture::deviceGoneError(reason)
                                                                 : flk::capture::captureFailedError(reason));
        return false;
    }
    input_.reset(context);
    streamIndex_ = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    std::string reason;
    if (streamIndex_ >= 0) decoder_ = FLKCaptureDecoder::make(context->streams[streamIndex_]->codecpar, &reason);
    if (!decoder_) {
        input_.reset();
        flk::setError(error, flk::capture::captureFailedError("Cannot decode " + source_.url + ": " + reason));
        return false;
    }
    return true;
}

void FLKAVDeviceCaptureInput::close() {
    decoder_.reset();
    input_.reset();
}

void FLKAVDeviceCaptureInput::captureLoop() {
    flk::media::Packet packet(av_packet_alloc());
    while (!stopping()) {
        int rc = av_read_frame(input_.get(), packet.get());
        if (rc == AVERROR(EAGAIN)) continue;
        if (rc < 0) {
            std::string reason = "Reading " + source_.url + " failed: " + flk::media::avErrorText(rc);
            bool gone = rc == AVERROR(ENODEV) || (source_.isGone && source_.isGone());
            fail(gone ? flk::capture::deviceGoneError(reason) : flk::capture::captureFailedError(reason));
            return;
        }
        double arrival = monotonicNow();
        if (packet->stream_index == streamIndex_) {
            decoder_->decode(packet.get(), [&](std::shared_ptr<const FLKPixelBuffer> pixels) {
                FLKCapturedFrame frame;
                frame.pixels = std::move(pixels);
                frame.arrivalTime = arrival;
                deliver(std::move(frame));
            });
        }
        av_packet_unref(packet.get());
    }
}

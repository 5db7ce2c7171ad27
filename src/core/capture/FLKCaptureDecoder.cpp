#include "core/capture/FLKCaptureDecoder.h"

#include <cstring>

extern "C" {
#include <libswscale/swscale.h>
}

namespace {
flk::media::CodecContext openContext(const AVCodec* codec, const AVCodecParameters* parameters, std::string* reason) {
    if (!codec) {
        if (reason) *reason = "no decoder for the stream";
        return nullptr;
    }
    flk::media::CodecContext context(avcodec_alloc_context3(codec));
    if (!context || (parameters && avcodec_parameters_to_context(context.get(), parameters) < 0)) {
        if (reason) *reason = "cannot set up the decoder";
        return nullptr;
    }
    context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    context->thread_count = 1;
    int rc = avcodec_open2(context.get(), codec, nullptr);
    if (rc < 0) {
        if (reason) *reason = "cannot open the decoder: " + flk::media::avErrorText(rc);
        return nullptr;
    }
    return context;
}
}  // namespace

FLKCaptureDecoder::FLKCaptureDecoder(flk::media::CodecContext context)
    : context_(std::move(context)), frame_(av_frame_alloc()), scaler_(0, 0, AV_PIX_FMT_BGRA, SWS_BILINEAR) {}

std::unique_ptr<FLKCaptureDecoder> FLKCaptureDecoder::make(const AVCodecParameters* parameters, std::string* reason) {
    auto context = openContext(avcodec_find_decoder(parameters->codec_id), parameters, reason);
    if (!context) return nullptr;
    return std::unique_ptr<FLKCaptureDecoder>(new FLKCaptureDecoder(std::move(context)));
}

std::unique_ptr<FLKCaptureDecoder> FLKCaptureDecoder::make(AVCodecID codec, std::string* reason) {
    auto context = openContext(avcodec_find_decoder(codec), nullptr, reason);
    if (!context) return nullptr;
    return std::unique_ptr<FLKCaptureDecoder>(new FLKCaptureDecoder(std::move(context)));
}

bool FLKCaptureDecoder::decode(const AVPacket* packet, const PictureHandler& handler) {
    int rc = avcodec_send_packet(context_.get(), packet);
    if (rc < 0 && rc != AVERROR_EOF) return false;
    while (avcodec_receive_frame(context_.get(), frame_.get()) == 0) {
        scaler_.setOutputSize(frame_->width, frame_->height);
        auto converted = scaler_.scale(frame_.get());
        av_frame_unref(frame_.get());
        if (!converted) continue;
        auto pixels = std::make_shared<FLKPixelBuffer>(converted->width, converted->height);
        for (int y = 0; y < converted->height; ++y) {
            std::memcpy(pixels->bgra.data() + static_cast<size_t>(y) * pixels->stride,
                        converted->data[0] + static_cast<ptrdiff_t>(y) * converted->linesize[0],
                        static_cast<size_t>(pixels->stride));
        }
        handler(std::move(pixels));
    }
    return true;
}

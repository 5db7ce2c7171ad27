#include "core/capture/FLKCaptureDecoder.h"

#include "core/capture/FLKPixelBufferPool.h"

#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
}

extern "C" {
#include <libswscale/swscale.h>
}

namespace {
flk::media::CodecContext openContext(const AVCodec* codec, const AVCodecParameters* parameters, std::string* reason,
                                     int flags2 = 0) {
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
    context->flags2 |= flags2;
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
    : context_(std::move(context)), frame_(av_frame_alloc()), pool_(FLKPixelBufferPool::make()) {}

FLKCaptureDecoder::~FLKCaptureDecoder() { sws_freeContext(converter_); }

std::unique_ptr<FLKCaptureDecoder> FLKCaptureDecoder::make(const AVCodecParameters* parameters, std::string* reason) {
    auto context = openContext(avcodec_find_decoder(parameters->codec_id), parameters, reason);
    if (!context) return nullptr;
    return std::unique_ptr<FLKCaptureDecoder>(new FLKCaptureDecoder(std::move(context)));
}

std::unique_ptr<FLKCaptureDecoder> FLKCaptureDecoder::make(AVCodecID codec, std::string* reason, Options options) {
    auto context = openContext(avcodec_find_decoder(codec), nullptr, reason,
                               options == kPartialPictures ? AV_CODEC_FLAG2_CHUNKS : 0);
    if (!context) return nullptr;
    return std::unique_ptr<FLKCaptureDecoder>(new FLKCaptureDecoder(std::move(context)));
}

std::shared_ptr<const FLKPixelBuffer> FLKCaptureDecoder::convert(const uint8_t* const planes[], const int strides[],
                                                                 int width, int height, AVPixelFormat format) {
    converter_ = sws_getCachedContext(converter_, width, height, format, width, height, AV_PIX_FMT_BGRA, SWS_POINT,
                                      nullptr, nullptr, nullptr);
    if (!converter_) return nullptr;
    // Converted straight into the buffer the sprite and the writer share: no second copy.
    auto pixels = pool_->take(width, height);
    uint8_t* destination[4] = {pixels->bgra.data(), nullptr, nullptr, nullptr};
    int destinationStrides[4] = {pixels->stride, 0, 0, 0};
    sws_scale(converter_, planes, strides, 0, height, destination, destinationStrides);
    return pixels;
}

bool FLKCaptureDecoder::decode(const AVPacket* packet, const PictureHandler& handler) {
    if (packet && context_->codec_id == AV_CODEC_ID_RAWVIDEO && context_->width > 0 && context_->height > 0) {
        // A grabbed screen's packet is the picture itself: read it where it lies.
        uint8_t* planes[4] = {};
        int strides[4] = {};
        if (av_image_fill_arrays(planes, strides, packet->data, context_->pix_fmt, context_->width, context_->height,
                                 1) > packet->size) {
            return false;
        }
        if (auto pixels = convert(planes, strides, context_->width, context_->height, context_->pix_fmt)) {
            handler(std::move(pixels));
        }
        return true;
    }
    int rc = avcodec_send_packet(context_.get(), packet);
    if (rc < 0 && rc != AVERROR_EOF) return false;
    while (avcodec_receive_frame(context_.get(), frame_.get()) == 0) {
        auto pixels = convert(frame_->data, frame_->linesize, frame_->width, frame_->height,
                              static_cast<AVPixelFormat>(frame_->format));
        av_frame_unref(frame_.get());
        if (pixels) handler(std::move(pixels));
    }
    return true;
}

void FLKCaptureDecoder::reset() { avcodec_flush_buffers(context_.get()); }

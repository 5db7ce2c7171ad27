#include "core/media/FLKVideoEncoderSession.h"

#include <algorithm>

#include "core/platform/FLKStageTimes.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

std::unique_ptr<FLKVideoEncoderSession> FLKVideoEncoderSession::open(const std::string& path,
                                                                     const FLKVideoEncoder::Options& options,
                                                                     std::string* reason) {
    if (options.width <= 0 || options.height <= 0 || options.width % 2 || options.height % 2 || options.fps <= 0) {
        *reason = "Cannot write \"" + path + "\": the size must be positive and even and the frame rate positive (" +
                  std::to_string(options.width) + "x" + std::to_string(options.height) + " at " +
                  std::to_string(options.fps) + " fps).";
        return nullptr;
    }
    std::unique_ptr<FLKVideoEncoderSession> session(new FLKVideoEncoderSession);
    session->path_ = path;
    session->output_ = flk::media::openOutput(path, reason);
    if (!session->output_ || !session->openEncoder(options, reason)) return nullptr;
    int status = avformat_write_header(session->output_.get(), nullptr);
    if (status < 0) {
        *reason = "Cannot write \"" + path + "\": " + flk::media::avErrorText(status) + ".";
        return nullptr;
    }
    return session;
}

bool FLKVideoEncoderSession::openEncoder(const FLKVideoEncoder::Options& options, std::string* reason) {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    AVPixelFormat format = av_get_pix_fmt(options.pixelFormat.c_str());
    if (!codec || format == AV_PIX_FMT_NONE) {
        *reason = !codec ? std::string("The H.264 encoder (libx264) is not available.")
                         : "Unknown pixel format \"" + options.pixelFormat + "\".";
        return false;
    }
    codec_.reset(avcodec_alloc_context3(codec));
    stream_ = avformat_new_stream(output_.get(), nullptr);
    packet_.reset(av_packet_alloc());
    bool allocated = true;
    for (auto& picture : pictures_) {
        picture.reset(av_frame_alloc());
        allocated = allocated && picture;
    }
    if (!codec_ || !stream_ || !packet_ || !allocated) {
        *reason = "Out of memory while setting up the H.264 encoder.";
        return false;
    }
    AVCodecContext* context = codec_.get();
    context->width = options.width;
    context->height = options.height;
    context->pix_fmt = format;
    const int timeScale = options.timeScale > 0 ? options.timeScale : options.fps;
    context->time_base = AVRational{1, timeScale};
    context->framerate = AVRational{options.fps, 1};
    context->color_primaries = AVCOL_PRI_BT709;
    context->color_trc = AVCOL_TRC_BT709;
    context->colorspace = AVCOL_SPC_BT709;
    context->color_range = AVCOL_RANGE_MPEG;
    context->thread_count = 0;
    if (output_->oformat->flags & AVFMT_GLOBALHEADER) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    bool tenBit = descriptor && descriptor->comp[0].depth > 8;
    av_opt_set(context->priv_data, "profile", tenBit ? "high10" : "high", 0);
    av_opt_set(context->priv_data, "preset", options.preset.c_str(), 0);
    if (options.crf > 0) av_opt_set_double(context->priv_data, "crf", options.crf, 0);
    if (options.lookaheadFrames >= 0) av_opt_set_int(context->priv_data, "rc-lookahead", options.lookaheadFrames, 0);
    encoderThreads_.begin();
    int status = avcodec_open2(context, codec, nullptr);
    encoderThreads_.end();
    if (status < 0) {
        *reason = "Cannot open the H.264 encoder for \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
        return false;
    }
    avcodec_parameters_from_context(stream_->codecpar, context);
    stream_->time_base = context->time_base;
    stream_->avg_frame_rate = context->framerate;
    flk::media::setOrientationOfStream(stream_, options.orientation);

    bool buffers = true;
    for (auto& picture : pictures_) {
        picture->width = options.width;
        picture->height = options.height;
        picture->format = format;
        buffers = buffers && av_frame_get_buffer(picture.get(), 0) >= 0;
    }
    converter_ = sws_getContext(options.width, options.height, AV_PIX_FMT_BGRA, options.width, options.height, format,
                                SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!buffers || !converter_) {
        *reason = "Cannot set up the colour conversion for \"" + path_ + "\".";
        return false;
    }
    const int* bt709 = sws_getCoefficients(SWS_CS_ITU709);
    sws_setColorspaceDetails(converter_, bt709, 1, bt709, 0, 0, 1 << 16, 1 << 16);
    return true;
}

FLKVideoEncoderSession::~FLKVideoEncoderSession() { sws_freeContext(converter_); }

bool FLKVideoEncoderSession::encode(const FLKPixelBuffer& frame, int64_t ticks, int64_t durationTicks,
                                    std::string* reason) {
    if (frame.bgra.size() < static_cast<size_t>(std::max(frame.stride, 0)) * std::max(frame.height, 0)) {
        *reason = "A frame of " + std::to_string(frame.width) + "x" + std::to_string(frame.height) +
                  " holds fewer bytes than its rows for \"" + path_ + "\".";
        return false;
    }
    return encode(frame.bgra.data(), frame.width, frame.height, frame.stride, ticks, durationTicks, reason);
}

bool FLKVideoEncoderSession::encode(const uint8_t* bgra, int width, int height, int stride, int64_t ticks,
                                    int64_t durationTicks, std::string* reason) {
    return convert(bgra, width, height, stride, 0, reason) && encodePicture(0, ticks, durationTicks, reason);
}

bool FLKVideoEncoderSession::convert(const uint8_t* bgra, int width, int height, int stride, int index,
                                     std::string* reason) {
    if (width != codec_->width || height != codec_->height || stride < width * 4) {
        *reason = "A frame of " + std::to_string(width) + "x" + std::to_string(height) +
                  " cannot be written to the " + std::to_string(codec_->width) + "x" +
                  std::to_string(codec_->height) + " video \"" + path_ + "\".";
        return false;
    }
    AVFrame* picture = pictures_[index].get();
    // The encoder may still hold the picture as a reference.
    if (av_frame_make_writable(picture) < 0) {
        *reason = "Out of memory while writing \"" + path_ + "\".";
        return false;
    }
    const uint8_t* source[1] = {bgra};
    const int sourceStride[1] = {stride};
    FLKStageTimes::CpuScope converting(FLKStageTimes::kConvert);
    sws_scale(converter_, source, sourceStride, 0, height, picture->data, picture->linesize);
    return true;
}

bool FLKVideoEncoderSession::encodePicture(int index, int64_t ticks, int64_t durationTicks, std::string* reason) {
    AVFrame* picture = pictures_[index].get();
    picture->pts = ticks;
    durations_[ticks] = durationTicks;
    picture->color_primaries = AVCOL_PRI_BT709;
    picture->color_trc = AVCOL_TRC_BT709;
    picture->colorspace = AVCOL_SPC_BT709;
    picture->color_range = AVCOL_RANGE_MPEG;
    return send(picture, reason);
}

bool FLKVideoEncoderSession::send(const AVFrame* frame, std::string* reason) {
    FLKStageTimes::CpuScope encoding(FLKStageTimes::kEncode);
    int status = avcodec_send_frame(codec_.get(), frame);
    if (status < 0) {
        *reason = "Cannot encode \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
        return false;
    }
    while ((status = avcodec_receive_packet(codec_.get(), packet_.get())) == 0) {
        // Without a duration the MP4 gets a wrong frame rate and length. Only
        // the last frame's counts: the others last until the next one.
        if (auto found = durations_.find(packet_->pts); found != durations_.end()) {
            packet_->duration = found->second;
            durations_.erase(found);
        }
        av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        FLKStageTimes::CpuScope muxing(FLKStageTimes::kMux);
        status = av_interleaved_write_frame(output_.get(), packet_.get());
        if (status < 0) {
            *reason = "Cannot write \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
            return false;
        }
    }
    if (status != AVERROR(EAGAIN) && status != AVERROR_EOF) {
        *reason = "Cannot encode \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
        return false;
    }
    return true;
}

bool FLKVideoEncoderSession::finish(std::string* reason) {
    if (!send(nullptr, reason)) return false;
    // Read while the encoder's own threads are still there to be read.
    FLKStageTimes::shared().addCpu(FLKStageTimes::kEncode, encoderThreads_.cpuNs());
    FLKStageTimes::CpuScope muxing(FLKStageTimes::kMux);
    int status = av_write_trailer(output_.get());
    if (status < 0) {
        *reason = "Cannot complete \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
        return false;
    }
    output_.reset();
    return true;
}

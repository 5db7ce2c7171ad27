#include "FLKSilenceWriter.h"

#include <cmath>
#include <system_error>

#include "core/media/FLKMediaSupport.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace {

constexpr int kSampleRate = 44100;

struct SilenceEncoder {
    flk::media::OutputContext output;
    flk::media::CodecContext codec;
    AVStream* stream = nullptr;

    bool open(const std::string& path, std::string* reason);
    bool encode(const AVFrame* frame, std::string* reason);
};

bool SilenceEncoder::open(const std::string& path, std::string* reason) {
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, "mp3", path.c_str()) < 0 || !context) {
        *reason = "the MP3 container is not available";
        return false;
    }
    output.reset(context);
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_MP3);
    if (!encoder) {
        *reason = "no MP3 encoder is available";
        return false;
    }
    codec.reset(avcodec_alloc_context3(encoder));
    codec->sample_rate = kSampleRate;
    codec->sample_fmt = encoder->sample_fmts ? encoder->sample_fmts[0] : AV_SAMPLE_FMT_S16P;
    codec->bit_rate = 64000;
    av_channel_layout_default(&codec->ch_layout, 2);
    codec->time_base = {1, kSampleRate};
    stream = avformat_new_stream(context, nullptr);
    int status = avcodec_open2(codec.get(), encoder, nullptr);
    if (status >= 0) status = avcodec_parameters_from_context(stream->codecpar, codec.get());
    stream->time_base = codec->time_base;
    if (status >= 0) status = avio_open(&context->pb, path.c_str(), AVIO_FLAG_WRITE);
    if (status >= 0) status = avformat_write_header(context, nullptr);
    if (status < 0) *reason = flk::media::avErrorText(status);
    return status >= 0;
}

bool SilenceEncoder::encode(const AVFrame* frame, std::string* reason) {
    int status = avcodec_send_frame(codec.get(), frame);
    flk::media::Packet packet(av_packet_alloc());
    while (status >= 0) {
        status = avcodec_receive_packet(codec.get(), packet.get());
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return true;
        if (status < 0) break;
        av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
        packet->stream_index = stream->index;
        status = av_interleaved_write_frame(output.get(), packet.get());
    }
    *reason = flk::media::avErrorText(status);
    return false;
}

bool writeSilence(const std::string& path, double seconds, std::string* reason) {
    SilenceEncoder encoder;
    if (!encoder.open(path, reason)) return false;
    const int frameSize = encoder.codec->frame_size > 0 ? encoder.codec->frame_size : 1152;
    const int64_t total = static_cast<int64_t>(std::ceil(seconds * kSampleRate));
    flk::media::Frame frame(av_frame_alloc());
    frame->format = encoder.codec->sample_fmt;
    frame->sample_rate = kSampleRate;
    frame->nb_samples = frameSize;
    av_channel_layout_copy(&frame->ch_layout, &encoder.codec->ch_layout);
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        *reason = "out of memory";
        return false;
    }
    av_samples_set_silence(frame->extended_data, 0, frameSize, 2, encoder.codec->sample_fmt);
    for (int64_t written = 0; written < total; written += frameSize) {
        frame->pts = written;
        if (!encoder.encode(frame.get(), reason)) return false;
    }
    if (!encoder.encode(nullptr, reason)) return false;
    int status = av_write_trailer(encoder.output.get());
    if (status < 0) *reason = flk::media::avErrorText(status);
    return status >= 0;
}

}  // namespace

bool flkWriteSilence(const std::filesystem::path& url, double seconds, FLKError* error) {
    std::filesystem::path partial = url;
    partial += ".partial.mp3";
    std::string reason;
    bool written = writeSilence(partial.string(), seconds, &reason);
    std::error_code ec;
    if (written) std::filesystem::rename(partial, url, ec);
    if (!written || ec) {
        std::filesystem::remove(partial, ec);
        flk::setError(error, flk::media::makeError(flk::media::kErrorWriteFailed,
                                                   "Could not write the silence " + url.string() + ".",
                                                   reason.empty() ? "It could not be moved into place." : reason));
        return false;
    }
    return true;
}

#include "core/media/FLKAudioEncoder.h"

#include <algorithm>
#include <vector>

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

std::unique_ptr<FLKAudioEncoder> FLKAudioEncoder::addToOutput(AVFormatContext* output, int sampleRate, int channels,
                                                              int64_t totalSamples, std::string* reason) {
    const AVCodec* codec = avcodec_find_encoder_by_name("aac");
    if (!codec) {
        *reason = "The AAC encoder is not available.";
        return nullptr;
    }
    std::unique_ptr<FLKAudioEncoder> encoder(new FLKAudioEncoder);
    encoder->output_ = output;
    encoder->sampleRate_ = sampleRate;
    encoder->channels_ = std::clamp(channels, 1, 2);
    encoder->totalSamples_ = std::max<int64_t>(0, totalSamples);
    encoder->codec_.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = encoder->codec_.get();
    encoder->stream_ = avformat_new_stream(output, nullptr);
    encoder->packet_.reset(av_packet_alloc());
    if (!context || !encoder->stream_ || !encoder->packet_) {
        *reason = "Out of memory while setting up the AAC encoder.";
        return nullptr;
    }
    context->sample_fmt = AV_SAMPLE_FMT_FLTP;
    context->sample_rate = sampleRate;
    av_channel_layout_default(&context->ch_layout, encoder->channels_);
    context->bit_rate = 64000 * encoder->channels_;
    context->time_base = AVRational{1, sampleRate};
    if (output->oformat->flags & AVFMT_GLOBALHEADER) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    int status = avcodec_open2(context, codec, nullptr);
    if (status < 0) {
        *reason = "Cannot open the AAC encoder: " + flk::media::avErrorText(status) + ".";
        return nullptr;
    }
    avcodec_parameters_from_context(encoder->stream_->codecpar, context);
    encoder->stream_->time_base = context->time_base;
    encoder->fifo_ = av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, encoder->channels_, context->frame_size * 4);
    if (!encoder->fifo_) {
        *reason = "Out of memory while setting up the AAC encoder.";
        return nullptr;
    }
    return encoder;
}

FLKAudioEncoder::~FLKAudioEncoder() {
    if (fifo_) av_audio_fifo_free(fifo_);
    swr_free(&resampler_);
}

bool FLKAudioEncoder::pushDecoded(const AVFrame* frame, std::string* reason) {
    if (!resampler_) {
        // FFmpeg 5.1 takes the layouts as non-const but does not modify them.
        int status = swr_alloc_set_opts2(&resampler_, &codec_->ch_layout, AV_SAMPLE_FMT_FLTP, sampleRate_,
                                         const_cast<AVChannelLayout*>(&frame->ch_layout), static_cast<AVSampleFormat>(frame->format),
                                         frame->sample_rate, 0, nullptr);
        if (status < 0 || swr_init(resampler_) < 0) {
            *reason = "Cannot convert the audio to AAC's format.";
            return false;
        }
    }
    int capacity = swr_get_out_samples(resampler_, frame->nb_samples);
    if (capacity <= 0) return true;
    std::vector<std::vector<float>> planes(channels_, std::vector<float>(capacity));
    std::vector<uint8_t*> pointers;
    for (auto& plane : planes) pointers.push_back(reinterpret_cast<uint8_t*>(plane.data()));
    int converted = swr_convert(resampler_, pointers.data(), capacity, const_cast<const uint8_t**>(frame->extended_data),
                                frame->nb_samples);
    if (converted < 0) {
        *reason = "Cannot convert the audio to AAC's format.";
        return false;
    }
    return queue(pointers.data(), converted, reason);
}

bool FLKAudioEncoder::pushPlanar(const float* const* planes, int samples, std::string* reason) {
    std::vector<uint8_t*> pointers;
    for (int c = 0; c < channels_; ++c) pointers.push_back(reinterpret_cast<uint8_t*>(const_cast<float*>(planes[c])));
    return queue(pointers.data(), samples, reason);
}

bool FLKAudioEncoder::pushSilence(int64_t samples, std::string* reason) {
    const int chunk = 4096;
    std::vector<float> zeros(chunk, 0.0f);
    std::vector<uint8_t*> pointers(channels_, reinterpret_cast<uint8_t*>(zeros.data()));
    while (samples > 0 && !isFull()) {
        int count = static_cast<int>(std::min<int64_t>(samples, chunk));
        if (!queue(pointers.data(), count, reason)) return false;
        samples -= count;
    }
    return true;
}

bool FLKAudioEncoder::queue(uint8_t* const* planes, int samples, std::string* reason) {
    int wanted = static_cast<int>(std::min<int64_t>(samples, totalSamples_ - samplesQueued_));
    if (wanted <= 0) return true;
    if (av_audio_fifo_write(fifo_, reinterpret_cast<void**>(const_cast<uint8_t**>(planes)), wanted) < wanted) {
        *reason = "Out of memory while encoding audio.";
        return false;
    }
    samplesQueued_ += wanted;
    return encodeAvailable(false, reason);
}

bool FLKAudioEncoder::encodeAvailable(bool flushing, std::string* reason) {
    const int frameSize = codec_->frame_size > 0 ? codec_->frame_size : 1024;
    while (av_audio_fifo_size(fifo_) >= frameSize || (flushing && av_audio_fifo_size(fifo_) > 0)) {
        int samples = std::min(frameSize, av_audio_fifo_size(fifo_));
        flk::media::Frame frame(av_frame_alloc());
        if (!frame) {
            *reason = "Out of memory while encoding audio.";
            return false;
        }
        frame->nb_samples = samples;
        frame->format = AV_SAMPLE_FMT_FLTP;
        frame->sample_rate = sampleRate_;
        av_channel_layout_copy(&frame->ch_layout, &codec_->ch_layout);
        if (av_frame_get_buffer(frame.get(), 0) < 0 ||
            av_audio_fifo_read(fifo_, reinterpret_cast<void**>(frame->data), samples) < samples) {
            *reason = "Out of memory while encoding audio.";
            return false;
        }
        frame->pts = samplesEncoded_;
        samplesEncoded_ += samples;
        if (!sendFrame(frame.get(), reason)) return false;
    }
    return true;
}

bool FLKAudioEncoder::sendFrame(const AVFrame* frame, std::string* reason) {
    int status = avcodec_send_frame(codec_.get(), frame);
    if (status < 0) {
        *reason = "Cannot encode audio: " + flk::media::avErrorText(status) + ".";
        return false;
    }
    while ((status = avcodec_receive_packet(codec_.get(), packet_.get())) == 0) {
        av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
        packet_->stream_index = stream_->index;
        status = av_interleaved_write_frame(output_, packet_.get());
        if (status < 0) {
            *reason = "Cannot write audio: " + flk::media::avErrorText(status) + ".";
            return false;
        }
    }
    if (status != AVERROR(EAGAIN) && status != AVERROR_EOF) {
        *reason = "Cannot encode audio: " + flk::media::avErrorText(status) + ".";
        return false;
    }
    return true;
}

bool FLKAudioEncoder::finish(std::string* reason) {
    if (!pushSilence(totalSamples_ - samplesQueued_, reason)) return false;
    if (!encodeAvailable(true, reason)) return false;
    return sendFrame(nullptr, reason);
}

#include "core/media/FLKAsset.h"

#include <cmath>

#include "core/media/FLKMediaSupport.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

double streamDuration(const AVStream* stream, const AVFormatContext* format) {
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
        return flk::media::secondsOf(stream->duration, stream->time_base);
    if (format->duration != AV_NOPTS_VALUE && format->duration > 0)
        return static_cast<double>(format->duration) / AV_TIME_BASE;
    return 0;
}

float nominalFrameRate(const AVStream* stream) {
    AVRational rate = stream->avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0) rate = stream->r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0) return 0;
    return static_cast<float>(av_q2d(rate));
}

FLKAssetTrack videoTrackOf(const AVStream* stream, const AVFormatContext* format) {
    const AVCodecParameters* parameters = stream->codecpar;
    FLKAssetTrack track;
    track.streamIndex = stream->index;
    track.mediaType = FLKMediaType::Video;
    track.codecName = avcodec_get_name(parameters->codec_id);
    track.duration = streamDuration(stream, format);
    track.nominalFrameRate = nominalFrameRate(stream);
    track.naturalSize = {static_cast<double>(parameters->width), static_cast<double>(parameters->height)};
    track.orientation = flk::media::orientationOfStream(stream);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(parameters->format));
    if (descriptor) {
        track.pixelFormatName = descriptor->name;
        track.bitsPerComponent = descriptor->comp[0].depth;
    }
    return track;
}

FLKAssetTrack audioTrackOf(const AVStream* stream, const AVFormatContext* format) {
    const AVCodecParameters* parameters = stream->codecpar;
    FLKAssetTrack track;
    track.streamIndex = stream->index;
    track.mediaType = FLKMediaType::Audio;
    track.codecName = avcodec_get_name(parameters->codec_id);
    track.duration = streamDuration(stream, format);
    track.sampleRate = parameters->sample_rate;
    track.channelCount = parameters->ch_layout.nb_channels;
    return track;
}

bool isStillImage(const AVStream* stream) {
    return (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

}  // namespace

FLKAsset::FLKAsset(std::string path) : path_(std::move(path)) { probe(); }

std::shared_ptr<FLKAsset> FLKAsset::assetWithPath(std::string path) {
    return std::make_shared<FLKAsset>(std::move(path));
}

void FLKAsset::probe() {
    std::string reason;
    flk::media::InputContext input = flk::media::openInput(path_, &reason);
    if (!input) {
        failureReason_ = reason;
        return;
    }
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVStream* stream = input->streams[i];
        AVMediaType type = stream->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_VIDEO && !isStillImage(stream) && stream->codecpar->width > 0) {
            tracks_.push_back(videoTrackOf(stream, input.get()));
            if (!videoTrack_) videoTrack_ = tracks_.back();
        } else if (type == AVMEDIA_TYPE_AUDIO) {
            tracks_.push_back(audioTrackOf(stream, input.get()));
            if (!audioTrack_) audioTrack_ = tracks_.back();
        }
    }
    if (tracks_.empty()) {
        failureReason_ = "\"" + path_ + "\" contains no video or audio.";
        return;
    }
    if (input->duration != AV_NOPTS_VALUE && input->duration > 0)
        duration_ = static_cast<double>(input->duration) / AV_TIME_BASE;
    else
        for (const FLKAssetTrack& track : tracks_) duration_ = std::max(duration_, track.end());
    if (!(duration_ > 0) || !std::isfinite(duration_)) {
        duration_ = 0;
        failureReason_ = "\"" + path_ + "\" has no readable duration.";
    }
}

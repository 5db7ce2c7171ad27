#include "core/media/FLKAudioMuxer.h"

#include <cmath>
#include <filesystem>
#include <system_error>

#include "core/media/FLKAudioEncoder.h"
#include "core/media/FLKMediaSupport.h"
#include "core/platform/FLKAtomicFile.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace {

using flk::media::makeError;

// Rates the AAC encoder takes; anything else is resampled to 48 kHz.
int aacSampleRate(int sourceRate) {
    for (int rate : {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000})
        if (rate == sourceRate) return rate;
    return 48000;
}

// The first audio stream of a file, decoded.
struct AudioSource {
    flk::media::InputContext input;
    flk::media::CodecContext codec;
    AVStream* stream = nullptr;

    bool open(const std::string& path, std::string* reason) {
        input = flk::media::openInput(path, reason);
        if (!input) return false;
        const AVCodec* decoder = nullptr;
        int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
        if (index < 0 || !decoder) {
            *reason = "\"" + path + "\" contains no audio that can be decoded.";
            return false;
        }
        stream = input->streams[index];
        codec.reset(avcodec_alloc_context3(decoder));
        if (!codec || avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0 ||
            avcodec_open2(codec.get(), decoder, nullptr) < 0) {
            *reason = "Cannot open the audio decoder for \"" + path + "\".";
            return false;
        }
        codec->pkt_timebase = stream->time_base;
        return true;
    }
};

class MuxJob {
public:
    MuxJob(const std::string& videoPath, const std::string& audioPath, std::string temporaryPath)
        : videoPath_(videoPath), audioPath_(audioPath), temporaryPath_(std::move(temporaryPath)) {}

    bool run(std::string* reason) {
        return openVideo(reason) && openAudio(reason) && createOutput(reason) && copyPackets(reason) &&
               finishOutput(reason);
    }

private:
    bool openVideo(std::string* reason) {
        video_ = flk::media::openInput(videoPath_, reason);
        if (!video_) return false;
        int index = av_find_best_stream(video_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (index < 0) {
            *reason = "\"" + videoPath_ + "\" contains no video.";
            return false;
        }
        videoStream_ = video_->streams[index];
        if (videoStream_->duration != AV_NOPTS_VALUE && videoStream_->duration > 0)
            videoSeconds_ = flk::media::secondsOf(videoStream_->duration, videoStream_->time_base);
        else if (video_->duration != AV_NOPTS_VALUE)
            videoSeconds_ = static_cast<double>(video_->duration) / AV_TIME_BASE;
        return true;
    }

    bool openAudio(std::string* reason) {
        if (audioPath_.empty()) return true;
        audio_ = std::make_unique<AudioSource>();
        return audio_->open(audioPath_, reason);
    }

    bool createOutput(std::string* reason) {
        output_ = flk::media::openOutput(temporaryPath_, reason);
        if (!output_) return false;
        AVStream* copied = avformat_new_stream(output_.get(), nullptr);
        if (!copied || avcodec_parameters_copy(copied->codecpar, videoStream_->codecpar) < 0) {
            *reason = "Out of memory while writing \"" + temporaryPath_ + "\".";
            return false;
        }
        copied->codecpar->codec_tag = 0;
        copied->time_base = videoStream_->time_base;
        copied->avg_frame_rate = videoStream_->avg_frame_rate;
        flk::media::setOrientationOfStream(copied, flk::media::orientationOfStream(videoStream_));
        outputVideo_ = copied;

        int sampleRate = audio_ ? aacSampleRate(audio_->codec->sample_rate) : 48000;
        int channels = audio_ ? audio_->codec->ch_layout.nb_channels : 2;
        auto totalSamples = static_cast<int64_t>(std::llround(videoSeconds_ * sampleRate));
        encoder_ = FLKAudioEncoder::addToOutput(output_.get(), sampleRate, channels, totalSamples, reason);
        if (!encoder_) return false;

        AVDictionary* options = nullptr;
        av_dict_set(&options, "movflags", "+faststart", 0);
        int status = avformat_write_header(output_.get(), &options);
        av_dict_free(&options);
        if (status < 0) {
            *reason = "Cannot write \"" + temporaryPath_ + "\": " + flk::media::avErrorText(status) + ".";
            return false;
        }
        return true;
    }

    // Video packets go out as they are; before each one, audio is encoded up
    // to its time so that the muxer never has to hold much back.
    bool copyPackets(std::string* reason) {
        flk::media::Packet packet(av_packet_alloc());
        if (!packet) return false;
        int status = 0;
        while ((status = av_read_frame(video_.get(), packet.get())) >= 0) {
            if (packet->stream_index != videoStream_->index) {
                av_packet_unref(packet.get());
                continue;
            }
            int64_t timestamp = packet->dts != AV_NOPTS_VALUE ? packet->dts : packet->pts;
            double seconds = timestamp == AV_NOPTS_VALUE ? 0 : flk::media::secondsOf(timestamp, videoStream_->time_base);
            if (!encodeAudioUntil(seconds + 0.5, reason)) return false;
            av_packet_rescale_ts(packet.get(), videoStream_->time_base, outputVideo_->time_base);
            packet->stream_index = outputVideo_->index;
            packet->pos = -1;
            status = av_interleaved_write_frame(output_.get(), packet.get());
            if (status < 0) {
                *reason = "Cannot write \"" + temporaryPath_ + "\": " + flk::media::avErrorText(status) + ".";
                return false;
            }
        }
        if (status != AVERROR_EOF) {
            *reason = "Cannot read \"" + videoPath_ + "\": " + flk::media::avErrorText(status) + ".";
            return false;
        }
        return encodeAudioUntil(videoSeconds_ + 1, reason);
    }

    bool encodeAudioUntil(double seconds, std::string* reason) {
        if (!audio_ || audioEnded_) return true;
        flk::media::Packet packet(av_packet_alloc());
        flk::media::Frame frame(av_frame_alloc());
        if (!packet || !frame) return false;
        while (!encoder_->isFull() && encoder_->queuedSeconds() < seconds) {
            int status = avcodec_receive_frame(audio_->codec.get(), frame.get());
            if (status == 0) {
                if (!encoder_->pushDecoded(frame.get(), reason)) return false;
                continue;
            }
            if (status == AVERROR_EOF) break;
            if (status != AVERROR(EAGAIN) && status != AVERROR_INVALIDDATA) {
                *reason = "Cannot decode the audio of \"" + audioPath_ + "\": " + flk::media::avErrorText(status) + ".";
                return false;
            }
            status = av_read_frame(audio_->input.get(), packet.get());
            if (status == AVERROR_EOF) {
                avcodec_send_packet(audio_->codec.get(), nullptr);
                continue;
            }
            if (status < 0) {
                *reason = "Cannot read \"" + audioPath_ + "\": " + flk::media::avErrorText(status) + ".";
                return false;
            }
            if (packet->stream_index == audio_->stream->index) avcodec_send_packet(audio_->codec.get(), packet.get());
            av_packet_unref(packet.get());
        }
        if (encoder_->isFull() || encoder_->queuedSeconds() < seconds) audioEnded_ = true;
        return true;
    }

    bool finishOutput(std::string* reason) {
        if (!encoder_->finish(reason)) return false;
        int status = av_write_trailer(output_.get());
        if (status < 0) {
            *reason = "Cannot complete \"" + temporaryPath_ + "\": " + flk::media::avErrorText(status) + ".";
            return false;
        }
        output_.reset();
        return true;
    }

    std::string videoPath_;
    std::string audioPath_;
    std::string temporaryPath_;
    flk::media::InputContext video_;
    AVStream* videoStream_ = nullptr;
    double videoSeconds_ = 0;
    std::unique_ptr<AudioSource> audio_;
    bool audioEnded_ = false;
    flk::media::OutputContext output_;
    AVStream* outputVideo_ = nullptr;
    std::unique_ptr<FLKAudioEncoder> encoder_;
};

}  // namespace

bool FLKAudioMuxer::muxVideo(const std::string& videoPath, const std::string& audioPath,
                             const std::string& destinationPath, FLKError* error) {
    namespace fs = std::filesystem;
    const std::string description = "The video could not be saved to \"" + destinationPath + "\".";
    fs::path destination(destinationPath);
    std::error_code ignored;
    if (!fs::is_directory(destination.has_parent_path() ? destination.parent_path() : fs::path("."), ignored)) {
        flk::setError(error, makeError(flk::media::kErrorWriteFailed, description,
                                       "The folder of \"" + destinationPath + "\" does not exist."));
        return false;
    }
    fs::path temporary = flk::siblingTemporaryURL(destination);
    std::string reason;
    bool written = MuxJob(videoPath, audioPath, temporary.string()).run(&reason);
    if (written) {
        std::error_code renameError;
        fs::rename(temporary, destination, renameError);
        if (!renameError) return true;
        reason = "Cannot move the finished file to \"" + destinationPath + "\": " + renameError.message() + ".";
    }
    fs::remove(temporary, ignored);
    flk::setError(error, makeError(flk::media::kErrorWriteFailed, description, reason));
    return false;
}

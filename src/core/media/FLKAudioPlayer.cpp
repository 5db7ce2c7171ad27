#include "core/media/FLKAudioPlayer.h"

#include <SDL2/SDL.h>

#include <algorithm>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include "core/media/FLKMediaSupport.h"
#include "core/platform/FLKLog.h"

namespace {

using flk::media::makeError;

struct ResamplerFreer {
    void operator()(SwrContext* context) const { swr_free(&context); }
};
using Resampler = std::unique_ptr<SwrContext, ResamplerFreer>;

// Rates every output takes directly; anything else is resampled to 48 kHz.
int outputRateFor(int inputRate) { return inputRate == 44100 || inputRate == 48000 ? inputRate : 48000; }

struct DecodedAudio {
    std::vector<int16_t> samples;
    int sampleRate = 0;
};

class AudioDecoder {
public:
    explicit AudioDecoder(const std::filesystem::path& url) : url_(url) {}

    bool decode(DecodedAudio& out, FLKError* error) {
        return open(error) && makeResampler(out, error) && readAll(out, error) && checkNotEmpty(out, error);
    }

private:
    bool fail(long code, const std::string& reason, FLKError* error) {
        flk::setError(error, makeError(code, "The audio file \"" + url_.string() + "\" cannot be played.", reason));
        return false;
    }

    bool open(FLKError* error) {
        std::string reason;
        input_ = flk::media::openInput(url_.string(), &reason);
        if (!input_) return fail(flk::media::kErrorOpenFailed, reason, error);
        const AVCodec* codec = nullptr;
        streamIndex_ = av_find_best_stream(input_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
        if (streamIndex_ < 0 || !codec) return fail(flk::media::kErrorNoAudioTrack, "It has no audio track.", error);
        decoder_.reset(avcodec_alloc_context3(codec));
        if (!decoder_) return fail(flk::media::kErrorDecodeFailed, "Out of memory.", error);
        avcodec_parameters_to_context(decoder_.get(), input_->streams[streamIndex_]->codecpar);
        int status = avcodec_open2(decoder_.get(), codec, nullptr);
        if (status < 0) {
            return fail(flk::media::kErrorDecodeFailed, "Its audio cannot be decoded: " + flk::media::avErrorText(status) + ".",
                        error);
        }
        return true;
    }

    bool makeResampler(DecodedAudio& out, FLKError* error) {
        AVChannelLayout inputLayout{};
        if (decoder_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC || decoder_->ch_layout.nb_channels == 0) {
            av_channel_layout_default(&inputLayout, std::max(decoder_->ch_layout.nb_channels, 1));
        } else {
            av_channel_layout_copy(&inputLayout, &decoder_->ch_layout);
        }
        AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
        out.sampleRate = outputRateFor(decoder_->sample_rate);
        SwrContext* raw = nullptr;
        int status = swr_alloc_set_opts2(&raw, &stereo, AV_SAMPLE_FMT_S16, out.sampleRate, &inputLayout,
                                         decoder_->sample_fmt, decoder_->sample_rate, 0, nullptr);
        av_channel_layout_uninit(&inputLayout);
        resampler_.reset(raw);
        if (status >= 0) status = swr_init(resampler_.get());
        if (status < 0) {
            return fail(flk::media::kErrorDecodeFailed,
                        "Its audio format cannot be converted: " + flk::media::avErrorText(status) + ".", error);
        }
        return true;
    }

    bool readAll(DecodedAudio& out, FLKError* error) {
        flk::media::Packet packet(av_packet_alloc());
        flk::media::Frame frame(av_frame_alloc());
        if (!packet || !frame) return fail(flk::media::kErrorDecodeFailed, "Out of memory.", error);
        maximumFrames_ = static_cast<int64_t>(FLKAudioPlayer::kMaximumDuration * out.sampleRate);
        while (av_read_frame(input_.get(), packet.get()) >= 0) {
            bool ours = packet->stream_index == streamIndex_;
            // A damaged packet is skipped; the decoder resynchronises on the next.
            if (ours) avcodec_send_packet(decoder_.get(), packet.get());
            av_packet_unref(packet.get());
            if (ours && !receiveFrames(frame.get(), out, error)) return false;
        }
        avcodec_send_packet(decoder_.get(), nullptr);
        if (!receiveFrames(frame.get(), out, error)) return false;
        return convert(nullptr, 0, out, error);
    }

    bool receiveFrames(AVFrame* frame, DecodedAudio& out, FLKError* error) {
        while (avcodec_receive_frame(decoder_.get(), frame) >= 0) {
            bool ok = convert(const_cast<const uint8_t**>(frame->extended_data), frame->nb_samples, out, error);
            av_frame_unref(frame);
            if (!ok) return false;
        }
        return true;
    }

    // A null input drains what the resampler still holds.
    bool convert(const uint8_t** input, int inputFrames, DecodedAudio& out, FLKError* error) {
        int capacity = swr_get_out_samples(resampler_.get(), inputFrames);
        if (capacity <= 0) return true;
        size_t start = out.samples.size();
        out.samples.resize(start + static_cast<size_t>(capacity) * FLKAudioPlayer::kChannels);
        uint8_t* destination = reinterpret_cast<uint8_t*>(out.samples.data() + start);
        int converted = swr_convert(resampler_.get(), &destination, capacity, input, inputFrames);
        out.samples.resize(start + static_cast<size_t>(std::max(converted, 0)) * FLKAudioPlayer::kChannels);
        if (converted < 0) {
            return fail(flk::media::kErrorDecodeFailed, "Its audio cannot be converted: " + flk::media::avErrorText(converted) + ".",
                        error);
        }
        if (static_cast<int64_t>(out.samples.size() / FLKAudioPlayer::kChannels) > maximumFrames_) {
            return fail(flk::media::kErrorInvalidArgument, "It is longer than 30 minutes.", error);
        }
        return true;
    }

    bool checkNotEmpty(const DecodedAudio& out, FLKError* error) {
        if (!out.samples.empty()) return true;
        return fail(flk::media::kErrorDecodeFailed, "Its audio track holds no sound.", error);
    }

    const std::filesystem::path& url_;
    flk::media::InputContext input_;
    flk::media::CodecContext decoder_;
    Resampler resampler_;
    int streamIndex_ = -1;
    int64_t maximumFrames_ = 0;
};

}  // namespace

std::unique_ptr<FLKAudioPlayer> FLKAudioPlayer::playerWithContentsOfURL(const std::filesystem::path& url,
                                                                        FLKError* error) {
    DecodedAudio audio;
    if (!AudioDecoder(url).decode(audio, error)) return nullptr;
    std::unique_ptr<FLKAudioPlayer> player(new FLKAudioPlayer(url, std::move(audio.samples), audio.sampleRate));
    player->openAudioOutput();
    return player;
}

FLKAudioPlayer::FLKAudioPlayer(std::filesystem::path url, std::vector<int16_t> samples, int sampleRate)
    : url_(std::move(url)), samples_(std::move(samples)), sampleRate_(sampleRate) {}

namespace {
// SDL keeps its error message in a buffer of the calling thread that only
// threads SDL started free when they end: a thread of ours (a queue's, a
// renderer's) would leak it.
std::string takeSDLError() {
    std::string message = SDL_GetError();
    SDL_TLSCleanup();
    return message;
}
}  // namespace

FLKAudioPlayer::~FLKAudioPlayer() {
    // Closing waits for a running callback to return.
    if (device_ != 0) SDL_CloseAudioDevice(device_);
    if (ownsSubsystem_) SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

void FLKAudioPlayer::openAudioOutput() {
    // Nobody here reads SDL's event queue: an interrupt must stay an interrupt.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) {
        outputFailure_ = "No audio output: " + takeSDLError();
        flk::log("%s; \"%s\" plays silently.", outputFailure_.c_str(), url_.c_str());
        return;
    }
    ownsSubsystem_ = true;
    SDL_AudioSpec wanted{};
    wanted.freq = sampleRate_;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = kChannels;
    wanted.samples = 1024;
    wanted.callback = &FLKAudioPlayer::fillAudio;
    wanted.userdata = this;
    SDL_AudioSpec obtained{};
    // No allowed changes: the audio subsystem converts to whatever the device needs.
    device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, &obtained, 0);
    if (device_ == 0) {
        outputFailure_ = "No audio output: " + takeSDLError();
        flk::log("%s; \"%s\" plays silently.", outputFailure_.c_str(), url_.c_str());
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
        ownsSubsystem_ = false;
    }
}

void FLKAudioPlayer::fillAudio(void* player, uint8_t* stream, int length) {
    static_cast<FLKAudioPlayer*>(player)->fill(reinterpret_cast<int16_t*>(stream), length / (kChannels * 2));
}

void FLKAudioPlayer::fill(int16_t* out, int64_t frames) {
    std::lock_guard lock(mutex_);
    int64_t copied = playing_ ? std::min(frames, frameCount() - position_) : 0;
    const int16_t* source = samples_.data() + position_ * kChannels;
    for (int64_t i = 0; i < copied * kChannels; ++i) {
        out[i] = static_cast<int16_t>(std::lround(source[i] * volume_));
    }
    std::memset(out + copied * kChannels, 0, static_cast<size_t>(frames - copied) * kChannels * sizeof(int16_t));
    if (!playing_) return;
    position_ += copied;
    if (position_ >= frameCount()) {
        // Like a finished player: stopped and back at the start.
        playing_ = false;
        position_ = 0;
    }
}

int64_t FLKAudioPlayer::clockPositionLocked() const {
    if (!playing_ || device_ != 0) return position_;
    auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - clockStart_).count();
    return position_ + static_cast<int64_t>(elapsed * sampleRate_);
}

void FLKAudioPlayer::play() {
    {
        std::lock_guard lock(mutex_);
        if (device_ == 0) {
            int64_t reached = clockPositionLocked();
            if (playing_ && reached < frameCount()) return;
            if (playing_) position_ = 0;
            clockStart_ = std::chrono::steady_clock::now();
        }
        playing_ = true;
    }
    if (device_ != 0) SDL_PauseAudioDevice(device_, 0);
}

void FLKAudioPlayer::pause() {
    {
        std::lock_guard lock(mutex_);
        int64_t reached = clockPositionLocked();
        position_ = reached < frameCount() ? reached : 0;
        playing_ = false;
    }
    if (device_ != 0) SDL_PauseAudioDevice(device_, 1);
}

bool FLKAudioPlayer::isPlaying() const {
    std::lock_guard lock(mutex_);
    return playing_ && clockPositionLocked() < frameCount();
}

double FLKAudioPlayer::duration() const { return static_cast<double>(frameCount()) / sampleRate_; }

double FLKAudioPlayer::currentTime() const {
    std::lock_guard lock(mutex_);
    int64_t reached = clockPositionLocked();
    return reached < frameCount() ? static_cast<double>(reached) / sampleRate_ : 0.0;
}

void FLKAudioPlayer::setCurrentTime(double seconds) {
    if (!std::isfinite(seconds)) seconds = 0;
    int64_t frames = std::clamp<int64_t>(std::llround(seconds * sampleRate_), 0, frameCount());
    std::lock_guard lock(mutex_);
    position_ = frames;
    clockStart_ = std::chrono::steady_clock::now();
}

float FLKAudioPlayer::volume() const {
    std::lock_guard lock(mutex_);
    return volume_;
}

void FLKAudioPlayer::setVolume(float volume) {
    std::lock_guard lock(mutex_);
    volume_ = std::isfinite(volume) ? std::clamp(volume, 0.0f, 1.0f) : 0.0f;
}

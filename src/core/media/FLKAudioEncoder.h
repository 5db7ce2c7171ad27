#pragma once

#include <cstdint>
#include <string>

#include "core/media/FLKMediaSupport.h"

struct AVAudioFifo;
struct SwrContext;

// An AAC stream (FFmpeg's native encoder) added to an output file. Decoded
// audio of any format is resampled to the encoder's format; the stream ends
// exactly after `totalSamples` samples, padding with silence when the
// input runs short and dropping what comes after.
class FLKAudioEncoder {
public:
    // Adds the stream; call before the output's header is written.
    static std::unique_ptr<FLKAudioEncoder> addToOutput(AVFormatContext* output, int sampleRate, int channels,
                                                        int64_t totalSamples, std::string* reason);
    ~FLKAudioEncoder();
    FLKAudioEncoder(const FLKAudioEncoder&) = delete;
    FLKAudioEncoder& operator=(const FLKAudioEncoder&) = delete;

    // Resamples and encodes a decoded frame (any rate, layout or format).
    bool pushDecoded(const AVFrame* frame, std::string* reason);
    // Encodes planar float samples already in the encoder's rate and layout.
    bool pushPlanar(const float* const* planes, int samples, std::string* reason);
    bool pushSilence(int64_t samples, std::string* reason);
    // Pads to the total, flushes the encoder and writes the last packets.
    bool finish(std::string* reason);

    bool isFull() const { return samplesQueued_ >= totalSamples_; }
    // Seconds of audio handed over so far.
    double queuedSeconds() const { return static_cast<double>(samplesQueued_) / sampleRate_; }
    int sampleRate() const { return sampleRate_; }
    int channels() const { return channels_; }

private:
    FLKAudioEncoder() = default;
    bool queue(uint8_t* const* planes, int samples, std::string* reason);
    bool encodeAvailable(bool flushing, std::string* reason);
    bool sendFrame(const AVFrame* frame, std::string* reason);

    AVFormatContext* output_ = nullptr;
    AVStream* stream_ = nullptr;
    flk::media::CodecContext codec_;
    flk::media::Packet packet_;
    AVAudioFifo* fifo_ = nullptr;
    SwrContext* resampler_ = nullptr;
    int sampleRate_ = 48000;
    int channels_ = 2;
    int64_t totalSamples_ = 0;
    int64_t samplesQueued_ = 0;
    int64_t samplesEncoded_ = 0;
};

#pragma once

#include <array>
#include <map>
#include <string>

#include "core/media/FLKMediaSupport.h"
#include "core/media/FLKVideoEncoder.h"
#include "core/platform/FLKStageTimes.h"

struct SwsContext;

// The FFmpeg side of one MP4 being written: file, H.264 encoder and the
// BGRA to YUV converter. Used by one thread at a time, or split in two: one
// thread converts frames into the session's pictures (convert), another
// encodes them (encodePicture, finish); a picture index passes from one to
// the other and back through the caller's own queues.
class FLKVideoEncoderSession {
public:
    static constexpr int kPictures = 2;

    static std::unique_ptr<FLKVideoEncoderSession> open(const std::string& path,
                                                        const FLKVideoEncoder::Options& options, std::string* reason);
    ~FLKVideoEncoderSession();
    FLKVideoEncoderSession(const FLKVideoEncoderSession&) = delete;
    FLKVideoEncoderSession& operator=(const FLKVideoEncoderSession&) = delete;

    // `ticks`: the frame's time in the encoder's time base; `durationTicks`:
    // how long it shows if it is the last.
    bool encode(const FLKPixelBuffer& frame, int64_t ticks, int64_t durationTicks, std::string* reason);
    // BGRA rows of `stride` bytes, read where they lie.
    bool encode(const uint8_t* bgra, int width, int height, int stride, int64_t ticks, int64_t durationTicks,
                std::string* reason);
    bool finish(std::string* reason);

    // Converts BGRA rows of `stride` bytes into picture `index`.
    bool convert(const uint8_t* bgra, int width, int height, int stride, int index, std::string* reason);
    // Encodes picture `index`, shown from `ticks`, and writes what comes out.
    bool encodePicture(int index, int64_t ticks, int64_t durationTicks, std::string* reason);

private:
    FLKVideoEncoderSession() = default;
    bool openEncoder(const FLKVideoEncoder::Options& options, std::string* reason);
    bool send(const AVFrame* frame, std::string* reason);

    std::string path_;
    flk::media::OutputContext output_;
    flk::media::CodecContext codec_;
    std::array<flk::media::Frame, kPictures> pictures_;  // each with the thread holding its index
    flk::media::Packet packet_;
    AVStream* stream_ = nullptr;
    SwsContext* converter_ = nullptr;
    FLKStageTimes::HelperThreads encoderThreads_;  // the encoder's frame and lookahead threads
    std::map<int64_t, int64_t> durations_;  // of the frames sent and not yet written, by time
};

#pragma once

// Owning handles for FFmpeg objects and error helpers shared by the media classes.

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include "core/media/FLKVideoOrientation.h"
#include "core/platform/FLKError.h"

namespace flk::media {

inline constexpr const char* kErrorDomain = "FLKMediaErrorDomain";

enum ErrorCode : long {
    kErrorOpenFailed = 1,
    kErrorNoVideoTrack = 2,
    kErrorDecodeFailed = 3,
    kErrorEncodeFailed = 4,
    kErrorWriteFailed = 5,
    kErrorInvalidArgument = 6,
    kErrorNoAudioTrack = 7,
    kErrorCancelled = 8,
};

std::string avErrorText(int code);
// Whether FFmpeg's own informational lines (encoder settings, statistics)
// reach standard error; errors always do.
void setLibraryLogVerbose(bool verbose);
FLKError makeError(long code, std::string description, std::string reason = {});

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct OutputCloser {
    void operator()(AVFormatContext* context) const;  // closes the file too
};
struct CodecContextFreer {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFreer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFreer {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

using InputContext = std::unique_ptr<AVFormatContext, InputCloser>;
using OutputContext = std::unique_ptr<AVFormatContext, OutputCloser>;
using CodecContext = std::unique_ptr<AVCodecContext, CodecContextFreer>;
using Frame = std::unique_ptr<AVFrame, FrameFreer>;
using Packet = std::unique_ptr<AVPacket, PacketFreer>;

// Opens and probes a file; on failure answers null and a reason naming the file.
InputContext openInput(const std::string& path, std::string* reason);
// Creates an MP4 file for writing; on failure answers null and a reason.
OutputContext openOutput(const std::string& path, std::string* reason);

// How a stream's pictures are shown, from its display matrix.
FLKVideoOrientation orientationOfStream(const AVStream* stream);
// Writes the display matrix (nothing for an upright orientation).
bool setOrientationOfStream(AVStream* stream, const FLKVideoOrientation& orientation);

// Seconds of a timestamp in `timeBase`, relative to `origin` (ignored when unset).
double secondsOf(int64_t timestamp, AVRational timeBase, int64_t origin = AV_NOPTS_VALUE);

}  // namespace flk::media

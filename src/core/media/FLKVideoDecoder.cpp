#include "core/media/FLKVideoDecoder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

namespace {
constexpr double kTimeEpsilon = 1e-6;

#if defined(__SANITIZE_THREAD__)
// FFmpeg's decoding threads hand frames over through atomics inside the
// uninstrumented library, which ThreadSanitizer cannot see; decode on the
// calling thread there so that reports point at our own code.
constexpr bool kFrameThreads = false;
#else
constexpr bool kFrameThreads = true;
#endif
}  // namespace

std::unique_ptr<FLKVideoDecoder> FLKVideoDecoder::open(const std::string& path, std::string* reason,
                                                       Threading threading) {
    std::unique_ptr<FLKVideoDecoder> decoder(new FLKVideoDecoder);
    decoder->path_ = path;
    decoder->input_ = flk::media::openInput(path, reason);
    if (!decoder->input_) return nullptr;
    const AVCodec* codec = nullptr;
    int index = av_find_best_stream(decoder->input_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (index < 0 || !codec) {
        *reason = "\"" + path + "\" has no video track that can be decoded.";
        return nullptr;
    }
    AVStream* stream = decoder->input_->streams[index];
    decoder->stream_ = stream;
    decoder->orientation_ = flk::media::orientationOfStream(stream);
    for (unsigned i = 0; i < decoder->input_->nb_streams; ++i)
        if (static_cast<int>(i) != index) decoder->input_->streams[i]->discard = AVDISCARD_ALL;

    decoder->codec_.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = decoder->codec_.get();
    if (!context || avcodec_parameters_to_context(context, stream->codecpar) < 0) {
        *reason = "Cannot set up the video decoder for \"" + path + "\".";
        return nullptr;
    }
    context->pkt_timebase = stream->time_base;
    // One per core: FFmpeg's own choice, one more, holds one more context and its frames.
    const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    context->thread_count = kFrameThreads && threading == Threading::Frames ? cores : 1;
    context->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    int status = avcodec_open2(context, codec, nullptr);
    if (status < 0) {
        *reason = "Cannot open the " + std::string(codec->name) + " decoder for \"" + path +
                  "\": " + flk::media::avErrorText(status) + ".";
        return nullptr;
    }
    AVRational rate = stream->avg_frame_rate.num > 0 ? stream->avg_frame_rate : stream->r_frame_rate;
    if (rate.num > 0 && rate.den > 0) decoder->frameDuration_ = av_q2d(av_inv_q(rate));
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0) {
        decoder->streamEnd_ = flk::media::secondsOf(stream->duration, stream->time_base);
    }
    decoder->packet_.reset(av_packet_alloc());
    decoder->decoded_.reset(av_frame_alloc());
    decoder->held_.reset(av_frame_alloc());
    if (!decoder->packet_ || !decoder->decoded_ || !decoder->held_) {
        *reason = "Out of memory while opening \"" + path + "\".";
        return nullptr;
    }
    return decoder;
}

double FLKVideoDecoder::timeOf(const AVFrame* frame) const {
    int64_t timestamp = frame->best_effort_timestamp;
    if (timestamp == AV_NOPTS_VALUE) timestamp = frame->pts;
    if (timestamp == AV_NOPTS_VALUE) return 0;
    return flk::media::secondsOf(timestamp, stream_->time_base, stream_->start_time);
}

int64_t FLKVideoDecoder::timestampOf(double seconds) const {
    int64_t timestamp = static_cast<int64_t>(std::floor(seconds / av_q2d(stream_->time_base)));
    if (stream_->start_time != AV_NOPTS_VALUE) timestamp += stream_->start_time;
    return timestamp;
}

double FLKVideoDecoder::keyFrameTimeAtOrBefore(double seconds) const {
    const int index = av_index_search_timestamp(stream_, timestampOf(seconds), AVSEEK_FLAG_BACKWARD);
    const AVIndexEntry* entry = index >= 0 ? avformat_index_get_entry(stream_, index) : nullptr;
    if (!entry) return std::numeric_limits<double>::infinity();
    return flk::media::secondsOf(entry->timestamp, stream_->time_base, stream_->start_time);
}

void FLKVideoDecoder::setDraft() {
    codec_->skip_loop_filter = AVDISCARD_ALL;
    codec_->skip_frame = AVDISCARD_NONREF;
}

bool FLKVideoDecoder::seekStream(double seconds) {
    const int64_t target = timestampOf(seconds);
    int status = av_seek_frame(input_.get(), stream_->index, target, AVSEEK_FLAG_BACKWARD);
    if (status < 0) status = av_seek_frame(input_.get(), stream_->index, target, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY);
    avcodec_flush_buffers(codec_.get());
    inputEnded_ = false;
    decoderDrained_ = false;
    hasHeld_ = false;
    lastTime_.reset();
    av_frame_unref(held_.get());
    return status >= 0;
}

bool FLKVideoDecoder::seekTo(double seconds) {
    failureReason_.clear();
    seconds = std::max(0.0, seconds);
    // The index can place a key frame's decode time before its presentation
    // time; step further back until the first frame decoded is not late.
    for (double backoff = 0;; backoff = backoff == 0 ? 1.0 : backoff * 2) {
        double target = std::max(0.0, seconds - backoff);
        if (!seekStream(target) && target > 0) continue;
        skipBefore_ = -1;
        double firstTime = 0;
        AVFrame* first = decodeNext(&firstTime);
        if (!first) return !failed();
        if (firstTime <= seconds + kTimeEpsilon || target <= 0 || backoff > 64) {
            av_frame_move_ref(held_.get(), first);
            heldTime_ = firstTime;
            hasHeld_ = true;
            skipBefore_ = seconds;
            return true;
        }
    }
}

bool FLKVideoDecoder::advanceTo(double seconds) {
    if (!lastTime_ || failed() || seconds <= *lastTime_ + kTimeEpsilon ||
        keyFrameTimeAtOrBefore(seconds) > *lastTime_ + kTimeEpsilon) {
        return seekTo(seconds);
    }
    if (hasHeld_) {
        // A frame read ahead, the one after the last given out: when it starts
        // after `seconds` the answer is the frame already given out.
        if (heldTime_ > seconds + kTimeEpsilon) return seekTo(seconds);
    } else {
        // The frame given out last answers unless a later one starts by then.
        av_frame_unref(held_.get());
        av_frame_move_ref(held_.get(), decoded_.get());
        heldTime_ = *lastTime_;
        hasHeld_ = true;
    }
    skipBefore_ = seconds;
    lastTime_.reset();
    return true;
}

bool FLKVideoDecoder::sendNextPacket() {
    while (true) {
        int status = av_read_frame(input_.get(), packet_.get());
        if (status == AVERROR_EOF) {
            inputEnded_ = true;
            avcodec_send_packet(codec_.get(), nullptr);
            return true;
        }
        if (status < 0) {
            failureReason_ = "Cannot read \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
            return false;
        }
        if (packet_->stream_index != stream_->index) {
            av_packet_unref(packet_.get());
            continue;
        }
        status = avcodec_send_packet(codec_.get(), packet_.get());
        av_packet_unref(packet_.get());
        // Damaged packets are skipped: a corrupt stretch loses frames, not the clip.
        if (status < 0 && status != AVERROR(EAGAIN) && status != AVERROR_INVALIDDATA) {
            failureReason_ = "Cannot decode \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
            return false;
        }
        return true;
    }
}

AVFrame* FLKVideoDecoder::decodeNext(double* seconds) {
    while (!decoderDrained_) {
        int status = avcodec_receive_frame(codec_.get(), decoded_.get());
        if (status == 0) {
            *seconds = timeOf(decoded_.get());
            return decoded_.get();
        }
        if (status == AVERROR_EOF) {
            decoderDrained_ = true;
            break;
        }
        if (status != AVERROR(EAGAIN) && status != AVERROR_INVALIDDATA) {
            failureReason_ = "Cannot decode \"" + path_ + "\": " + flk::media::avErrorText(status) + ".";
            return nullptr;
        }
        if (inputEnded_) {
            decoderDrained_ = true;
            break;
        }
        if (!sendNextPacket()) return nullptr;
    }
    return nullptr;
}

AVFrame* FLKVideoDecoder::nextFrame(double* seconds) {
    // Damaged data can make the decoder emit a frame stamped earlier than one
    // it already gave out; consumers need time order, so such frames are lost.
    while (AVFrame* frame = nextFrameAfterSeek(seconds)) {
        if (lastTime_ && *seconds <= *lastTime_ + kTimeEpsilon) continue;
        lastTime_ = *seconds;
        return frame;
    }
    return nullptr;
}

AVFrame* FLKVideoDecoder::nextFrameAfterSeek(double* seconds) {
    // After a seek the frame shown at the target is the last one that starts at
    // or before it, so each candidate is held until its successor is seen.
    while (true) {
        double time = 0;
        if (hasHeld_ && skipBefore_ < 0) {
            hasHeld_ = false;
            av_frame_unref(decoded_.get());
            av_frame_move_ref(decoded_.get(), held_.get());
            *seconds = heldTime_;
            return decoded_.get();
        }
        AVFrame* frame = decodeNext(&time);
        if (!frame) {
            if (failed() || !hasHeld_) return nullptr;
            // The held frame was the last one; past its end the target shows
            // nothing. A screen recording that ends on a still screen shows its
            // last frame until the stream ends.
            const double heldEnd = std::max(heldTime_ + frameDuration_, streamEnd_);
            if (skipBefore_ >= 0 && heldEnd <= skipBefore_ + kTimeEpsilon) {
                hasHeld_ = false;
                return nullptr;
            }
            skipBefore_ = -1;
            continue;
        }
        if (skipBefore_ < 0) {
            *seconds = time;
            return frame;
        }
        if (time <= skipBefore_ + kTimeEpsilon) {
            av_frame_unref(held_.get());
            av_frame_move_ref(held_.get(), frame);
            heldTime_ = time;
            hasHeld_ = true;
            continue;
        }
        // `frame` is the first one after the target: show the held one first.
        skipBefore_ = -1;
        if (!hasHeld_) {
            *seconds = time;
            return frame;
        }
        std::swap(held_, decoded_);
        std::swap(heldTime_, time);
        *seconds = time;
        return decoded_.get();
    }
}

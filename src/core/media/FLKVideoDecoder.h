#pragma once

#include <optional>
#include <string>

#include "core/media/FLKMediaSupport.h"

// Software decoding of a file's first video stream, multi-threaded, frames in
// presentation order with their times in seconds of the stream's media time
// (the stream's first timestamp is 0). One thread at a time.
class FLKVideoDecoder {
public:
    // Frame threads decode several frames at once, each holding its own
    // references; one thread holds far fewer frames.
    enum class Threading { Frames, Single };

    // Null with `reason` set when the file or its video cannot be opened.
    static std::unique_ptr<FLKVideoDecoder> open(const std::string& path, std::string* reason,
                                                 Threading threading = Threading::Frames);

    // Positions decoding so that the frame shown at `seconds` comes out first
    // from nextFrameAt(); earlier frames are skipped.
    bool seekTo(double seconds);
    // The same, but decoding on from the last frame given out when no key
    // frame lies between it and `seconds`: pictures asked for in time order
    // cost the frames between them, not a seek back to a key frame each.
    bool advanceTo(double seconds);
    // Before the first frame: pictures for previews, cheaper and rougher.
    // Deblocking is skipped and frames no other frame refers to are not
    // decoded, so the frame shown at a time may be one or two before it.
    void setDraft();
    // The next decoded frame at or after the sought position, owned by the
    // decoder until the next call; null at the end of the stream or on a
    // failure (then failed() is true). Times strictly increase between seeks.
    AVFrame* nextFrame(double* seconds);

    bool failed() const { return !failureReason_.empty(); }
    const std::string& failureReason() const { return failureReason_; }
    // The stored size; pictures are shown turned by orientation().
    int width() const { return codec_->width; }
    int height() const { return codec_->height; }
    const FLKVideoOrientation& orientation() const { return orientation_; }
    double frameDuration() const { return frameDuration_; }
    const std::string& path() const { return path_; }

private:
    FLKVideoDecoder() = default;
    bool seekStream(double seconds);
    AVFrame* decodeNext(double* seconds);
    AVFrame* nextFrameAfterSeek(double* seconds);
    bool sendNextPacket();
    double timeOf(const AVFrame* frame) const;
    // Of the nearest key frame in the file's index at or before `seconds`;
    // +infinity when the index does not say.
    double keyFrameTimeAtOrBefore(double seconds) const;
    int64_t timestampOf(double seconds) const;

    std::string path_;
    flk::media::InputContext input_;
    flk::media::CodecContext codec_;
    flk::media::Packet packet_;
    flk::media::Frame decoded_;
    flk::media::Frame held_;   // a frame read ahead while looking for the first one to show
    double heldTime_ = 0;
    bool hasHeld_ = false;
    std::optional<double> lastTime_;  // of the frame nextFrame() last gave out
    AVStream* stream_ = nullptr;
    FLKVideoOrientation orientation_;
    double frameDuration_ = 1.0 / 30;
    double streamEnd_ = 0;  // seconds; 0 when the file does not say
    double skipBefore_ = -1;  // frames ending at or before this are dropped
    bool inputEnded_ = false;
    bool decoderDrained_ = false;
    std::string failureReason_;
};

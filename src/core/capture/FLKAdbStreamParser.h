#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "core/capture/FLKCapturedFrame.h"

class FLKCaptureDecoder;
struct AVCodecContext;
struct AVCodecParserContext;

// screenrecord's raw H.264 as it comes out of the pipe. The recording gets
// the access units av_parser_parse2 cuts, exactly as they came; but the
// parser only ends an access unit when the next one begins, and a still
// phone screen may send nothing for seconds. So once a read leaves the pipe
// empty (screenrecord writes each encoded buffer whole), the bytes the parser
// holds are decoded at once as the end of a picture. When the parser later
// cuts that access unit, a guess that ended inside a NAL unit shows, and the
// pictures since the last key frame are decoded again. Capture thread only.
class FLKAdbStreamParser {
public:
    using FrameHandler = std::function<void(FLKCapturedFrame)>;
    using Clock = std::function<double()>;

    // The decoder must take partial pictures (FLKCaptureDecoder::kPartialPictures).
    FLKAdbStreamParser(std::unique_ptr<FLKCaptureDecoder> decoder, FrameHandler handler, Clock clock);
    ~FLKAdbStreamParser();
    FLKAdbStreamParser(const FLKAdbStreamParser&) = delete;
    FLKAdbStreamParser& operator=(const FLKAdbStreamParser&) = delete;

    // A new run of screenrecord: a new stream opening with a key frame.
    void beginStream();
    // Bytes just read; `writerPaused` when nothing more waits in the pipe.
    void append(const uint8_t* data, size_t size, bool writerPaused);
    // The run ended: what the parser holds is its last access unit.
    void endStream();

private:
    void closeParser();
    void parse(const uint8_t* data, int size);
    void accessUnit(const uint8_t* data, size_t size, bool keyFrame);
    void decodeHeldBytes();
    // The last picture the bytes complete, if any.
    std::shared_ptr<const FLKPixelBuffer> decode(const uint8_t* data, size_t size);
    void deliver(std::shared_ptr<const FLKPixelBuffer> pixels, double arrivalTime, bool alreadyShown);

    std::unique_ptr<FLKCaptureDecoder> decoder_;
    FrameHandler handler_;
    Clock clock_;
    AVCodecParserContext* parser_ = nullptr;
    AVCodecContext* parserCodec_ = nullptr;
    std::vector<uint8_t> held_;  // the bytes the parser took and has not cut yet
    size_t decodedEarly_ = 0;    // how many of them the decoder has had
    bool earlyCutInsideUnit_ = false;
    double earlyTime_ = 0;
    std::shared_ptr<const FLKPixelBuffer> earlyPicture_;
    std::vector<std::shared_ptr<const FLKCapturedPacket>> pending_;       // cut, not yet with a picture
    std::vector<std::shared_ptr<const FLKCapturedPacket>> sinceKeyFrame_;  // to decode again
};

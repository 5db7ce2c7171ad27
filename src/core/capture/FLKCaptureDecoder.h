#pragma once

#include <functional>
#include <memory>

#include "core/media/FLKMediaSupport.h"
#include "core/platform/FLKPixelBuffer.h"

// Turns a capture stream's packets into BGRA pictures as soon as each
// arrives: no frame threading, low delay.
struct SwsContext;
class FLKPixelBufferPool;

class FLKCaptureDecoder {
public:
    ~FLKCaptureDecoder();
    FLKCaptureDecoder(const FLKCaptureDecoder&) = delete;
    FLKCaptureDecoder& operator=(const FLKCaptureDecoder&) = delete;

    using PictureHandler = std::function<void(std::shared_ptr<const FLKPixelBuffer>)>;

    // Null with `reason` when no decoder can be opened.
    static std::unique_ptr<FLKCaptureDecoder> make(const AVCodecParameters* parameters, std::string* reason);
    // With kPartialPictures a packet may hold part of a picture, cut between
    // NAL units; a picture comes out once all of it is in.
    enum Options { kWholePictures = 0, kPartialPictures = 1 };
    static std::unique_ptr<FLKCaptureDecoder> make(AVCodecID codec, std::string* reason,
                                                   Options options = kWholePictures);

    // Decodes the packet (null drains) and hands over every picture it completes;
    // false when the packet cannot be decoded (the stream may still recover).
    bool decode(const AVPacket* packet, const PictureHandler& handler);
    // Forgets the pictures so far: decoding starts again at a key frame.
    void reset();

private:
    explicit FLKCaptureDecoder(flk::media::CodecContext context);
    std::shared_ptr<const FLKPixelBuffer> convert(const uint8_t* const planes[], const int strides[], int width,
                                                  int height, AVPixelFormat format);

    flk::media::CodecContext context_;
    flk::media::Frame frame_;
    SwsContext* converter_ = nullptr;  // kept while the pictures' size and format stay
    std::shared_ptr<FLKPixelBufferPool> pool_;
};

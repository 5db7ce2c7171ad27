#include "core/capture/FLKAdbStreamParser.h"

#include <algorithm>
#include <cstring>

#include "core/capture/FLKCaptureDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {
bool startsWithStartCode(const uint8_t* data, size_t size) {
    if (size >= 3 && data[0] == 0 && data[1] == 0 && data[2] == 1) return true;
    return size >= 4 && data[0] == 0 && data[1] == 0 && data[2] == 0 && data[3] == 1;
}
}  // namespace

FLKAdbStreamParser::FLKAdbStreamParser(std::unique_ptr<FLKCaptureDecoder> decoder, FrameHandler handler, Clock clock)
    : decoder_(std::move(decoder)), handler_(std::move(handler)), clock_(std::move(clock)) {}

FLKAdbStreamParser::~FLKAdbStreamParser() { closeParser(); }

void FLKAdbStreamParser::closeParser() {
    if (parser_) av_parser_close(parser_);
    parser_ = nullptr;
    avcodec_free_context(&parserCodec_);
    held_.clear();
    decodedEarly_ = 0;
    earlyCutInsideUnit_ = false;
    earlyPicture_.reset();
}

void FLKAdbStreamParser::beginStream() {
    closeParser();
    // A run cut off inside a picture may have left the decoder half-way; the new one opens with a key frame.
    decoder_->reset();
    sinceKeyFrame_.clear();
    parserCodec_ = avcodec_alloc_context3(nullptr);
    parser_ = av_parser_init(AV_CODEC_ID_H264);
}

void FLKAdbStreamParser::append(const uint8_t* data, size_t size, bool writerPaused) {
    if (!parser_ || size == 0) return;
    parse(data, static_cast<int>(size));
    if (writerPaused) decodeHeldBytes();
}

void FLKAdbStreamParser::endStream() {
    if (parser_) parse(nullptr, 0);
    closeParser();
}

void FLKAdbStreamParser::parse(const uint8_t* data, int size) {
    do {
        uint8_t* out = nullptr;
        int outSize = 0;
        int used = av_parser_parse2(parser_, parserCodec_, &out, &outSize, data, size, AV_NOPTS_VALUE, AV_NOPTS_VALUE,
                                    0);
        if (used < 0) return;
        if (data) {
            held_.insert(held_.end(), data, data + used);
            data += used;
            size -= used;
        }
        if (outSize > 0) accessUnit(out, static_cast<size_t>(outSize), parser_->key_frame == 1);
    } while (size > 0);
}

void FLKAdbStreamParser::decodeHeldBytes() {
    if (held_.size() <= decodedEarly_) return;
    // More of the same access unit after an earlier guess: it must go on at a unit's start.
    if (decodedEarly_ > 0 && !startsWithStartCode(held_.data() + decodedEarly_, held_.size() - decodedEarly_)) {
        earlyCutInsideUnit_ = true;
    }
    auto picture = decode(held_.data() + decodedEarly_, held_.size() - decodedEarly_);
    decodedEarly_ = held_.size();
    if (!picture) return;
    earlyTime_ = clock_();
    earlyPicture_ = picture;
    deliver(std::move(picture), earlyTime_, false);
}

void FLKAdbStreamParser::accessUnit(const uint8_t* data, size_t size, bool keyFrame) {
    const size_t early = decodedEarly_;
    auto earlyPicture = std::move(earlyPicture_);
    const bool mirrored = held_.size() >= size && std::memcmp(held_.data(), data, size) == 0;
    const bool cleanCut = !earlyCutInsideUnit_ && early <= size &&
                          (early == size || startsWithStartCode(data + early, size - early));

    auto packet = std::make_shared<FLKCapturedPacket>();
    packet->data.assign(data, data + size);
    packet->keyFrame = keyFrame;
    // A picture shown before its cut arrived when it was shown.
    packet->arrivalTime = earlyPicture && early == size ? earlyTime_ : clock_();
    pending_.push_back(packet);
    if (keyFrame) sinceKeyFrame_.clear();
    sinceKeyFrame_.push_back(packet);

    if (early == 0) {
        if (auto picture = decode(data, size)) deliver(std::move(picture), packet->arrivalTime, false);
    } else if (mirrored && cleanCut) {
        // The guess ended at a unit's boundary: the rest, if any, completes the picture.
        auto rest = early < size ? decode(data + early, size - early) : nullptr;
        if (rest) {
            deliver(std::move(rest), packet->arrivalTime, false);
        } else if (earlyPicture) {
            deliver(std::move(earlyPicture), packet->arrivalTime, true);
        }
    } else {
        // The decoder had a cut-off unit: start again from the last key frame.
        decoder_->reset();
        std::shared_ptr<const FLKPixelBuffer> last;
        for (const auto& again : sinceKeyFrame_) {
            if (auto picture = decode(again->data.data(), again->data.size())) last = std::move(picture);
        }
        if (last) deliver(std::move(last), packet->arrivalTime, false);
    }
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(std::min(size, held_.size())));
    decodedEarly_ = 0;
    earlyCutInsideUnit_ = false;
}

std::shared_ptr<const FLKPixelBuffer> FLKAdbStreamParser::decode(const uint8_t* data, size_t size) {
    flk::media::Packet packet(av_packet_alloc());
    if (av_new_packet(packet.get(), static_cast<int>(size)) < 0) return nullptr;
    std::copy(data, data + size, packet->data);
    std::shared_ptr<const FLKPixelBuffer> last;
    decoder_->decode(packet.get(), [&](std::shared_ptr<const FLKPixelBuffer> pixels) { last = std::move(pixels); });
    return last;
}

void FLKAdbStreamParser::deliver(std::shared_ptr<const FLKPixelBuffer> pixels, double arrivalTime, bool alreadyShown) {
    FLKCapturedFrame frame;
    frame.pixels = std::move(pixels);
    frame.arrivalTime = arrivalTime;
    frame.alreadyShown = alreadyShown;
    frame.packets.swap(pending_);
    handler_(std::move(frame));
}

#include "core/capture/FLKAdbCaptureInput.h"

#include "core/capture/FLKAdb.h"
#include "core/capture/FLKCaptureDecoder.h"
#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKSubprocess.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {
// screenrecord that fails at once this often in a row, with the phone still there, is given up.
constexpr int kMaxFailedStarts = 3;
}  // namespace

FLKAdbCaptureInput::FLKAdbCaptureInput(std::string serial, long bitRate)
    : serial_(std::move(serial)), bitRate_(bitRate) {}

FLKAdbCaptureInput::~FLKAdbCaptureInput() { stop(); }

bool FLKAdbCaptureInput::open(FLKError* error) {
    if (flk::adb::program().empty()) {
        flk::setError(error, flk::capture::captureFailedError(
                                 "adb was not found: install it (Debian package \"adb\") or set FLICKWELL_ADB."));
        return false;
    }
    std::string reason;
    decoder_ = FLKCaptureDecoder::make(AV_CODEC_ID_H264, &reason);
    if (!decoder_) {
        flk::setError(error, flk::capture::captureFailedError(reason));
        return false;
    }
    return true;
}

void FLKAdbCaptureInput::close() {
    decoder_.reset();
    pendingPackets_.clear();
}

void FLKAdbCaptureInput::interrupt() {
    std::lock_guard lock(processMutex_);
    if (process_) process_->kill();
}

void FLKAdbCaptureInput::requestKeyFrame() {
    restartRequested_ = true;
    interrupt();
}

void FLKAdbCaptureInput::captureLoop() {
    int failedStarts = 0;
    while (!stopping()) {
        std::string failure;
        bool produced = readOneRun(&failure);
        if (stopping()) break;
        if (restartRequested_.exchange(false)) continue;
        if (produced) {
            // The end of a run is screenrecord's time limit: carry on with a new one.
            failedStarts = 0;
            continue;
        }
        FLKError error;
        auto devices = flk::adb::listDevices(&error);
        bool present = false;
        if (devices) {
            for (const auto& entry : *devices) present |= entry.serial == serial_ && entry.isReady();
        }
        if (devices && !present) {
            fail(flk::capture::deviceGoneError("The phone \"" + serial_ + "\" is no longer connected."));
            return;
        }
        if (++failedStarts >= kMaxFailedStarts) {
            fail(flk::capture::captureFailedError(
                "screenrecord on \"" + serial_ + "\" failed" + (failure.empty() ? "." : ": " + failure)));
            return;
        }
    }
}

bool FLKAdbCaptureInput::readOneRun(std::string* failure) {
    auto process = std::make_shared<FLKSubprocess>();
    if (!process->start(flk::adb::screenrecordCommand(serial_, bitRate_), failure)) return false;
    {
        std::lock_guard lock(processMutex_);
        process_ = process;
    }
    ++runs_;
    // A fresh run starts a fresh stream; the decoder carries on with its new parameter sets.
    parserCodec_ = avcodec_alloc_context3(nullptr);
    parser_ = av_parser_init(AV_CODEC_ID_H264);
    bool produced = false;
    if (stopping()) process->kill();
    std::vector<uint8_t> buffer(1 << 16);
    for (;;) {
        ssize_t n = process->read(buffer.data(), buffer.size());
        if (n <= 0) break;
        produced = true;
        parse(buffer.data(), static_cast<int>(n));
    }
    // The picture still held by the parser is complete once the stream ended.
    if (!stopping()) parse(nullptr, 0);
    av_parser_close(parser_);
    parser_ = nullptr;
    avcodec_free_context(&parserCodec_);
    {
        std::lock_guard lock(processMutex_);
        process_.reset();
    }
    int status = process->wait();
    if (!produced && failure && failure->empty()) {
        *failure = process->availableErrorOutput();
        if (failure->empty()) *failure = "screenrecord ended with status " + std::to_string(status);
    }
    return produced;
}

void FLKAdbCaptureInput::parse(const uint8_t* data, int size) {
    do {
        uint8_t* out = nullptr;
        int outSize = 0;
        int used = av_parser_parse2(parser_, parserCodec_, &out, &outSize, data, size, AV_NOPTS_VALUE, AV_NOPTS_VALUE,
                                    0);
        if (used < 0) return;
        if (data) {
            data += used;
            size -= used;
        }
        if (outSize > 0) emitPacket(out, outSize, parser_->key_frame == 1);
    } while (size > 0);
}

void FLKAdbCaptureInput::emitPacket(const uint8_t* data, int size, bool keyFrame) {
    auto stored = std::make_shared<FLKCapturedPacket>();
    stored->data.assign(data, data + size);
    stored->keyFrame = keyFrame;
    stored->arrivalTime = monotonicNow();
    pendingPackets_.push_back(stored);
    flk::media::Packet packet(av_packet_alloc());
    if (av_new_packet(packet.get(), size) < 0) return;
    std::copy(data, data + size, packet->data);
    if (keyFrame) packet->flags |= AV_PKT_FLAG_KEY;
    double arrival = stored->arrivalTime;
    decoder_->decode(packet.get(), [&](std::shared_ptr<const FLKPixelBuffer> pixels) {
        FLKCapturedFrame frame;
        frame.pixels = std::move(pixels);
        frame.arrivalTime = arrival;
        frame.packets.swap(pendingPackets_);
        deliver(std::move(frame));
    });
}

#include "core/capture/FLKAdbCaptureInput.h"

#include "core/capture/FLKAdb.h"
#include "core/capture/FLKAdbStreamParser.h"
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
    auto decoder = FLKCaptureDecoder::make(AV_CODEC_ID_H264, &reason, FLKCaptureDecoder::kPartialPictures);
    if (!decoder) {
        flk::setError(error, flk::capture::captureFailedError(reason));
        return false;
    }
    stream_ = std::make_unique<FLKAdbStreamParser>(
        std::move(decoder), [this](FLKCapturedFrame frame) { deliver(std::move(frame)); }, &monotonicNow);
    return true;
}

void FLKAdbCaptureInput::close() { stream_.reset(); }

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
    stream_->beginStream();
    bool produced = false;
    if (stopping()) process->kill();
    std::vector<uint8_t> buffer(1 << 16);
    for (;;) {
        ssize_t n = process->read(buffer.data(), buffer.size());
        if (n <= 0) break;
        produced = true;
        // An empty pipe after a read: screenrecord has written a whole picture.
        stream_->append(buffer.data(), static_cast<size_t>(n), !process->waitReadable(0));
    }
    // The picture still held by the parser is complete once the stream ended.
    if (!stopping()) stream_->endStream();
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

#include "core/media/FLKVideoEncoder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "core/media/FLKMediaSupport.h"
#include "core/media/FLKVideoEncoderSession.h"
#include "core/platform/FLKStageTimes.h"

namespace {
FLKError encoderError(const std::string& path, const std::string& reason) {
    return flk::media::makeError(flk::media::kErrorEncodeFailed, "The video \"" + path + "\" could not be written.",
                                 reason);
}
}  // namespace

FLKVideoEncoder::FLKVideoEncoder(std::string path, Options options)
    : path_(std::move(path)), options_(std::move(options)) {}

FLKVideoEncoder::~FLKVideoEncoder() {
    if (!finished_) cancel();
}

bool FLKVideoEncoder::start(FLKError* error) {
    if (started_) return session_ != nullptr;
    started_ = true;
    std::string reason;
    session_ = FLKVideoEncoderSession::open(path_, options_, &reason);
    if (!session_) {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
        flk::setError(error, encoderError(path_, reason));
        return false;
    }
    if (options_.threaded) {
        for (int picture = 0; picture < FLKVideoEncoderSession::kPictures; ++picture) freePictures_.push_back(picture);
        converter_ = std::thread([this] { convertLoop(); });
        worker_ = std::thread([this] { encodeLoop(); });
    }
    return true;
}

int64_t FLKVideoEncoder::ticksPerFrame(const Options& options) {
    return options.timeScale > 0 && options.fps > 0 ? std::max(1, options.timeScale / options.fps) : 1;
}

bool FLKVideoEncoder::append(const FLKPixelBuffer& frame, FLKError* error) {
    return append(frame, static_cast<int64_t>(framesAppended_) * ticksPerFrame(options_), 0, error);
}

bool FLKVideoEncoder::append(const FLKPixelBuffer& frame, int64_t ticks, int64_t durationTicks, FLKError* error) {
    if (!session_ || finished_) {
        flk::setError(error, encoderError(path_, "The writer is not open."));
        return false;
    }
    if (!options_.threaded) {
        std::unique_lock<std::mutex> unused;
        if (!admit(ticks, error, unused)) return false;
        if (!encodeNow(frame, ticks, durationTicks, error)) return false;
        ++framesAppended_;
        return true;
    }
    std::unique_lock lock(queueMutex_);
    if (!admit(ticks, error, lock)) return false;
    // Frames are copied into storage the worker handed back: a frame-sized
    // allocation a frame would churn the allocator and hold memory it cannot return.
    QueuedFrame copy;
    if (!spares_.empty()) {
        copy.pixels = std::move(spares_.back());
        spares_.pop_back();
    }
    copy.pixels.width = frame.width;
    copy.pixels.height = frame.height;
    copy.pixels.stride = frame.stride;
    copy.pixels.bgra.assign(frame.bgra.begin(), frame.bgra.end());
    copy.ticks = ticks;
    copy.durationTicks = durationTicks;
    queue_.push_back(std::move(copy));
    ++framesAppended_;
    queueChanged_.notify_all();
    return true;
}

bool FLKVideoEncoder::admit(int64_t ticks, FLKError* error, std::unique_lock<std::mutex>& lock) {
    if (ticks <= lastTicks_) {
        flk::setError(error, encoderError(path_, "Frame times must increase (" + std::to_string(ticks) +
                                                     " ticks after " + std::to_string(lastTicks_) + ")."));
        return false;
    }
    lastTicks_ = ticks;
    if (!lock.owns_lock()) return true;  // unthreaded: nothing to wait for
    {
        FLKStageTimes::WaitScope waiting(FLKStageTimes::kReadBack, FLKStageTimes::WaitScope::On::output);
        queueChanged_.wait(lock, [&] {
            return queue_.size() < std::max<size_t>(1, options_.queueCapacity) ||
                   !workerError_.localizedDescription.empty();
        });
    }
    if (!workerError_.localizedDescription.empty()) {
        flk::setError(error, workerError_);
        return false;
    }
    return true;
}

bool FLKVideoEncoder::append(FLKLentPixels frame, FLKError* error) {
    if (!session_ || finished_) {
        flk::setError(error, encoderError(path_, "The writer is not open."));
        return false;
    }
    QueuedFrame queued;
    queued.ticks = static_cast<int64_t>(framesAppended_) * ticksPerFrame(options_);
    queued.lent = std::move(frame);
    if (!options_.threaded) {
        std::unique_lock<std::mutex> unused;
        if (!admit(queued.ticks, error, unused) || !encodeNow(queued, error)) return false;
        ++framesAppended_;
        return true;
    }
    std::unique_lock lock(queueMutex_);
    if (!admit(queued.ticks, error, lock)) return false;
    queue_.push_back(std::move(queued));
    ++framesAppended_;
    queueChanged_.notify_all();
    return true;
}

bool FLKVideoEncoder::encodeNow(const QueuedFrame& frame, FLKError* error) {
    if (!frame.lent.bgra) return encodeNow(frame.pixels, frame.ticks, frame.durationTicks, error);
    std::string reason;
    const int64_t duration = frame.durationTicks > 0 ? frame.durationTicks : ticksPerFrame(options_);
    if (session_->encode(frame.lent.bgra, frame.lent.width, frame.lent.height, frame.lent.stride, frame.ticks,
                         duration, &reason)) {
        return true;
    }
    flk::setError(error, encoderError(path_, reason));
    return false;
}

bool FLKVideoEncoder::encodeNow(const FLKPixelBuffer& frame, int64_t ticks, int64_t durationTicks, FLKError* error) {
    std::string reason;
    if (session_->encode(frame, ticks, durationTicks > 0 ? durationTicks : ticksPerFrame(options_), &reason)) {
        return true;
    }
    flk::setError(error, encoderError(path_, reason));
    return false;
}

void FLKVideoEncoder::failWorkersLocked(const FLKError& error) {
    if (workerError_.localizedDescription.empty()) workerError_ = error;
    queue_.clear();
    converted_.clear();
    queueChanged_.notify_all();
}

void FLKVideoEncoder::convertLoop() {
    while (true) {
        QueuedFrame frame;
        int picture = 0;
        {
            std::unique_lock lock(queueMutex_);
            {
                FLKStageTimes::WaitScope waiting(FLKStageTimes::kConvert, FLKStageTimes::WaitScope::On::input);
                queueChanged_.wait(lock, [&] { return !queue_.empty() || stopRequested_ || failed(); });
            }
            if (!queue_.empty() && !failed()) {
                FLKStageTimes::WaitScope waiting(FLKStageTimes::kConvert, FLKStageTimes::WaitScope::On::output);
                queueChanged_.wait(lock, [&] { return !freePictures_.empty() || failed(); });
            }
            // Stop requested and nothing left (or a cancel emptied the queue), or the encoder failed.
            if (queue_.empty() || failed()) {
                conversionEnded_ = true;
                queueChanged_.notify_all();
                return;
            }
            frame = std::move(queue_.front());
            queue_.pop_front();
            picture = freePictures_.back();
            freePictures_.pop_back();
            queueChanged_.notify_all();
        }
        std::string reason;
        const bool converted = frame.lent.bgra
                                   ? session_->convert(frame.lent.bgra, frame.lent.width, frame.lent.height,
                                                       frame.lent.stride, picture, &reason)
                                   : session_->convert(frame.pixels.bgra.data(), frame.pixels.width,
                                                       frame.pixels.height, frame.pixels.stride, picture, &reason);
        // A lent frame goes back to the renderer as soon as it is converted.
        frame.lent = {};
        std::lock_guard lock(queueMutex_);
        if (!frame.pixels.bgra.empty()) spares_.push_back(std::move(frame.pixels));
        if (!converted) {
            failWorkersLocked(encoderError(path_, reason));
            conversionEnded_ = true;
            return;
        }
        converted_.push_back({picture, frame.ticks, frame.durationTicks > 0 ? frame.durationTicks : ticksPerFrame(options_)});
        queueChanged_.notify_all();
    }
}

void FLKVideoEncoder::encodeLoop() {
    while (true) {
        ConvertedPicture picture;
        {
            std::unique_lock lock(queueMutex_);
            FLKStageTimes::WaitScope waiting(FLKStageTimes::kEncode, FLKStageTimes::WaitScope::On::input);
            queueChanged_.wait(lock, [&] { return !converted_.empty() || conversionEnded_ || failed(); });
            if (converted_.empty() || failed()) return;
            picture = converted_.front();
            converted_.pop_front();
        }
        std::string reason;
        const bool encoded = session_->encodePicture(picture.index, picture.ticks, picture.durationTicks, &reason);
        std::lock_guard lock(queueMutex_);
        freePictures_.push_back(picture.index);
        if (!encoded) {
            failWorkersLocked(encoderError(path_, reason));
            return;
        }
        queueChanged_.notify_all();
    }
}

bool FLKVideoEncoder::stopWorker() {
    if (!converter_.joinable()) return true;
    {
        std::lock_guard lock(queueMutex_);
        stopRequested_ = true;
    }
    queueChanged_.notify_all();
    converter_.join();
    worker_.join();
    return !failed();
}

bool FLKVideoEncoder::finish(FLKError* error) {
    if (finished_) return true;
    if (!session_) {
        flk::setError(error, encoderError(path_, "The writer is not open."));
        return false;
    }
    bool ok = stopWorker();
    std::string reason;
    if (ok && !session_->finish(&reason)) {
        workerError_ = encoderError(path_, reason);
        ok = false;
    }
    if (!ok) {
        flk::setError(error, workerError_);
        cancel();
        return false;
    }
    session_.reset();
    finished_ = true;
    return true;
}

void FLKVideoEncoder::cancel() {
    {
        std::lock_guard lock(queueMutex_);
        queue_.clear();
        for (const auto& picture : converted_) freePictures_.push_back(picture.index);
        converted_.clear();
    }
    stopWorker();
    bool hadFile = session_ != nullptr;
    session_.reset();
    finished_ = true;
    if (hadFile) {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
}

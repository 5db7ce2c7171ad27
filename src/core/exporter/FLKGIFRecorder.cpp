#include "core/exporter/FLKGIFRecorder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>

#include "core/platform/FLKAtomicFile.h"
#include "core/platform/FLKStageTimes.h"

namespace {
// Frames waiting for the encoder before the renderer is held back.
constexpr size_t kQueueLimit = 3;
// Measured on screen recordings: speed 8 costs a third of speed 5's time for
// a few per cent in size; half-strength dithering smooths gradients while
// leaving flat areas clean, which is both smaller and closer to the source
// than full dithering.
constexpr int kQuantizerSpeed = 8;
constexpr float kDitherLevel = 0.5f;

// libimagequant parallelises with OpenMP, whose idle threads spin; encoding
// already runs beside the renderer, so the worker asks for one thread.
void useOneOpenMPThread() {
    using SetThreads = void (*)(int);
    if (auto set = reinterpret_cast<SetThreads>(::dlsym(RTLD_DEFAULT, "omp_set_num_threads"))) set(1);
}

int side(double length) { return length >= 1 ? static_cast<int>(length) : 1; }
}  // namespace

FLKGIFRecorder::FLKGIFRecorder(std::shared_ptr<const FLKExportOptions> exportOptions, PaletteMode paletteMode)
    : exportOptions_(std::move(exportOptions)),
      paletteMode_(paletteMode),
      frameCalculator_(FLKFrameCalculator::calculatorWithFps(exportOptions_->fps(), exportOptions_->outputFps(),
                                                             exportOptions_->numFrames())) {}

FLKGIFRecorder::~FLKGIFRecorder() {
    {
        std::lock_guard lock(queueMutex_);
        noMoreFrames_ = true;
        encoderFailed_ = true;  // nothing more is worth encoding
        queue_.clear();
    }
    queueChanged_.notify_all();
    if (worker_.joinable()) worker_.join();
    encoder_.reset();
    if (fd_ >= 0) {
        ::close(fd_);
        ::unlink(temporaryURL_.c_str());
    }
}

FLKError FLKGIFRecorder::writeError(int code) const {
    return FLKError::make("NSPOSIXErrorDomain", code, "Could not write " + destinationURL().string() + ".",
                          std::strerror(code));
}

bool FLKGIFRecorder::record(FLKError* error) {
    std::lock_guard lock(appendMutex_);
    if (isRecording_ || fd_ >= 0) return true;
    temporaryURL_ = flk::siblingTemporaryURL(destinationURL());
    fd_ = ::open(temporaryURL_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd_ < 0) {
        flk::setError(error, writeError(errno));
        return false;
    }
    FLKGIFEncoder::Settings settings;
    settings.width = side(videoSize().width);
    settings.height = side(videoSize().height);
    settings.paletteMode = paletteMode_;
    settings.speed = kQuantizerSpeed;
    settings.ditherLevel = kDitherLevel;
    settings.loopCount = kLoopCountInFile;
    settings.frameDelay = frameCalculator_->outputFrameTime();
    encoder_ = std::make_unique<FLKGIFEncoder>(fd_, destinationURL(), settings);
    isRecording_ = true;
    currentFrame_ = 0;
    worker_ = std::thread(&FLKGIFRecorder::encodeFrames, this);
    return true;
}

void FLKGIFRecorder::appendBuffer(const FLKPixelBuffer& buffer) {
    double progress;
    {
        std::lock_guard lock(appendMutex_);
        if (!didSkipFirstFrame_) {
            didSkipFirstFrame_ = true;
            return;
        }
        if (!frameCalculator_->advanceWithFrameAtIndex(currentFrame_) || !isRecording_) return;
        FLKPixelBuffer copy = buffer;
        {
            std::unique_lock queueLock(queueMutex_);
            FLKStageTimes::WaitScope waiting(FLKStageTimes::kReadBack, FLKStageTimes::WaitScope::On::output);
            queueChanged_.wait(queueLock, [this] { return queue_.size() < kQueueLimit || encoderFailed_; });
            if (!encoderFailed_) queue_.push_back(std::move(copy));
        }
        queueChanged_.notify_all();
        currentFrame_ += 1;
        progress = numFrames() ? static_cast<double>(currentFrame_) / static_cast<double>(numFrames()) : 1.0;
    }
    if (progressHandler_) progressHandler_(progress);
}

void FLKGIFRecorder::encodeFrames() {
    useOneOpenMPThread();
    bool ok = true;
    for (;;) {
        FLKPixelBuffer frame;
        {
            std::unique_lock lock(queueMutex_);
            FLKStageTimes::WaitScope waiting(FLKStageTimes::kEncode, FLKStageTimes::WaitScope::On::input);
            queueChanged_.wait(lock, [this] { return !queue_.empty() || noMoreFrames_; });
            if (encoderFailed_) return;
            if (queue_.empty()) break;
            frame = std::move(queue_.front());
            queue_.pop_front();
        }
        queueChanged_.notify_all();
        {
            // Scaling, palette and compression: the GIF's encode stage.
            FLKStageTimes::CpuScope encoding(FLKStageTimes::kEncode);
            ok = encoder_->addFrame(frame, &encoderError_);
        }
        if (!ok) break;
    }
    if (ok) ok = encoder_->finish(&encoderError_);
    if (!ok) {
        std::lock_guard lock(queueMutex_);
        encoderFailed_ = true;
        queue_.clear();
    }
    queueChanged_.notify_all();
}

bool FLKGIFRecorder::isRecording() const {
    std::lock_guard lock(appendMutex_);
    return isRecording_;
}

std::uint64_t FLKGIFRecorder::currentFrame() const {
    std::lock_guard lock(appendMutex_);
    return currentFrame_;
}

bool FLKGIFRecorder::didSkipFirstFrame() const {
    std::lock_guard lock(appendMutex_);
    return didSkipFirstFrame_;
}

bool FLKGIFRecorder::finish(FLKError* error) {
    {
        std::lock_guard lock(appendMutex_);
        if (!isRecording_) {
            flk::setError(error, FLKError::make("FLKGIFRecorderErrorDomain", 2,
                                                "Could not write " + destinationURL().string() + ".",
                                                "The recording was never started."));
            return false;
        }
        isRecording_ = false;
    }
    {
        std::lock_guard lock(queueMutex_);
        noMoreFrames_ = true;
    }
    queueChanged_.notify_all();
    worker_.join();
    bool failed;
    {
        std::lock_guard lock(queueMutex_);
        failed = encoderFailed_;
    }
    encoder_.reset();
    int fd = fd_;
    fd_ = -1;
    if (failed) {
        ::close(fd);
        ::unlink(temporaryURL_.c_str());
        flk::setError(error, encoderError_);
        return false;
    }
    int code = ::fsync(fd) == 0 ? 0 : errno;
    if (::close(fd) != 0 && code == 0) code = errno;
    if (code == 0 && ::rename(temporaryURL_.c_str(), destinationURL().c_str()) != 0) code = errno;
    if (code != 0) {
        ::unlink(temporaryURL_.c_str());
        flk::setError(error, writeError(code));
        return false;
    }
    return true;
}

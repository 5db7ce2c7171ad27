#include "core/exporter/FLKVideoRecorder.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <system_error>

#include "core/media/FLKAudioMuxer.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKStageTimes.h"

namespace fs = std::filesystem;

namespace {
fs::path temporaryLocation(const FLKExportOptions& options) {
    if (auto url = options.tempDestinationURL()) return *url;
    // Only MP4 options name one; anything else still needs a place beside the store.
    return fs::temp_directory_path() / ("flickwell-export-" + std::to_string(::getpid()) + ".m4v");
}

FLKError destinationError(const std::string& reason) {
    return FLKError::make(kFLKExportErrorDomain, FLKVideoRecorder::kDestinationUnusable,
                          "The video cannot be saved there.", reason, "Choose another location for the export.");
}
}  // namespace

FLKVideoRecorder::FLKVideoRecorder(std::shared_ptr<const FLKExportOptions> exportOptions)
    : exportOptions_(std::move(exportOptions)),
      frameCalculator_(FLKFrameCalculator::calculatorWithFps(exportOptions_->fps(), exportOptions_->outputFps(),
                                                             exportOptions_->numFrames())),
      tempDestinationURL_(temporaryLocation(*exportOptions_)) {}

FLKVideoRecorder::~FLKVideoRecorder() { cleanup(); }

std::optional<FLKError> FLKVideoRecorder::problemWithDestination(const fs::path& destination) {
    std::error_code error;
    if (destination.filename().empty()) return destinationError("No file name was given for the export.");
    if (fs::is_directory(destination, error)) return destinationError("\"" + destination.string() + "\" is a folder.");
    const fs::path folder = destination.parent_path().empty() ? fs::current_path(error) : destination.parent_path();
    if (!fs::exists(folder, error)) return destinationError("The folder \"" + folder.string() + "\" does not exist.");
    if (!fs::is_directory(folder, error)) return destinationError("\"" + folder.string() + "\" is not a folder.");
    if (::access(folder.c_str(), W_OK) != 0) {
        return destinationError("The folder \"" + folder.string() + "\" is not writable.");
    }
    return std::nullopt;
}

int FLKVideoRecorder::lookaheadFramesForSize(FLKSize size) {
    // The encoder keeps each frame it looks ahead at full and quarter size,
    // padded: about three bytes a pixel. Its default of 40 frames takes about
    // 300 MB at 1080 x 1920, the largest part of an export's memory; bound it.
    constexpr double kBudgetBytes = 64.0 * 1024 * 1024;
    constexpr double kBytesPerPixel = 3;
    constexpr int kPresetFrames = 40;
    constexpr int kFewestFrames = 10;  // below this, the rate control barely sees a scene change coming
    const double frames = kBudgetBytes / (std::max(size.width * size.height, 1.0) * kBytesPerPixel);
    if (frames >= kPresetFrames) return -1;
    return std::max(kFewestFrames, static_cast<int>(frames));
}

bool FLKVideoRecorder::record(FLKError* error) {
    if (isRecording_.load()) return true;
    currentFrame_.store(0);
    didSkipFirstFrame_.store(false);
    writeError_.reset();
    if (auto problem = problemWithDestination(destinationURL())) {
        flk::setError(error, *problem);
        return false;
    }
    std::error_code ignored;
    fs::remove(tempDestinationURL_, ignored);

    FLKVideoEncoder::Options options;
    options.width = static_cast<int>(exportOptions_->videoSize().width);
    options.height = static_cast<int>(exportOptions_->videoSize().height);
    options.fps = static_cast<int>(frameCalculator_->fps());
    options.threaded = true;  // rendering the next frame overlaps encoding this one
    // One frame waiting is enough for the overlap; each is a full BGRA frame.
    options.queueCapacity = 1;
    options.lookaheadFrames = lookaheadFramesForSize(exportOptions_->videoSize());
    encoder_ = std::make_unique<FLKVideoEncoder>(tempDestinationURL_.string(), options);
    FLKError startError;
    if (!encoder_->start(&startError)) {
        encoder_.reset();
        flk::setError(error, exportError(kWriteFailed, startError));
        return false;
    }
    isRecording_.store(true);
    if (auto delegate = this->delegate()) delegate->recorderDidStart(*this);
    return true;
}

void FLKVideoRecorder::appendPixelBuffer(const FLKPixelBuffer& pixelBuffer) {
    appendFrame([&](FLKError* error) { return encoder_->append(pixelBuffer, error); });
}

void FLKVideoRecorder::appendLentPixels(FLKLentPixels pixels) {
    appendFrame([&](FLKError* error) { return encoder_->append(std::move(pixels), error); });
}

void FLKVideoRecorder::appendFrame(const std::function<bool(FLKError*)>& append) {
    if (!isRecording_.load()) return;
    if (!didSkipFirstFrame_.load()) {
        didSkipFirstFrame_.store(true);
        return;
    }
    // A file that failed once takes no more frames; finish() reports it.
    if (writeError_) return;
    FLKError error;
    if (!append(&error)) {
        flk::log("Writing frame %llu of \"%s\" failed: %s", static_cast<unsigned long long>(currentFrame_.load()),
                 tempDestinationURL_.c_str(), error.fullMessage().c_str());
        writeError_ = error;
        return;
    }
    const std::uint64_t written = currentFrame_.fetch_add(1) + 1;
    const std::uint64_t total = frameCalculator_->numFrames();
    if (auto delegate = this->delegate()) {
        delegate->didUpdateWithProgress(*this, total > 0 ? static_cast<double>(written) / static_cast<double>(total) : 1.0);
    }
}

void FLKVideoRecorder::finish() {
    if (!isRecording_.load()) return;
    std::optional<FLKError> failure;
    if (writeError_) {
        encoder_->cancel();
        failure = exportError(kWriteFailed, *writeError_);
    } else if (FLKError error; !encoder_->finish(&error)) {
        failure = exportError(kWriteFailed, error);
    } else if (currentFrame_.load() == 0) {
        failure = exportError(kNoFrames, FLKError::make(kFLKExportErrorDomain, kNoFrames, "",
                                                        "No frames were rendered for the video."));
    } else if (FLKError muxError; !writeSound(&muxError)) {
        failure = exportError(kMuxFailed, muxError);
    }
    finishSession(failure);
}

void FLKVideoRecorder::didFailRenderingOffScreen(FLKRenderer&, const FLKError& error) {
    if (!isRecording_.load()) return;
    encoder_->cancel();
    finishSession(exportError(kRenderFailed, error));
}

bool FLKVideoRecorder::writeSound(FLKError* error) {
    // Without a sound of its own the video gets a silent track of its length.
    const auto audioURL = exportOptions_->audioURL();
    FLKStageTimes::CpuScope muxing(FLKStageTimes::kMux);
    return FLKAudioMuxer::muxVideo(tempDestinationURL_.string(), audioURL ? audioURL->string() : std::string(),
                                   destinationURL().string(), error);
}

void FLKVideoRecorder::finishSession(const std::optional<FLKError>& error) {
    isRecording_.store(false);
    cleanup();
    notifyDidFinishWithPossibleError(error);
}

void FLKVideoRecorder::notifyDidFinishWithPossibleError(const std::optional<FLKError>& error) {
    auto delegate = this->delegate();
    if (!delegate) return;
    if (error) {
        delegate->didFailWithError(*this, *error);
    } else {
        delegate->recorderDidFinish(*this);
    }
}

void FLKVideoRecorder::cleanup() {
    encoder_.reset();
    std::error_code ignored;
    fs::remove(tempDestinationURL_, ignored);
}

FLKError FLKVideoRecorder::exportError(long code, const FLKError& cause) const {
    std::string reason = cause.failureReason.empty() ? cause.localizedDescription : cause.failureReason;
    return FLKError::make(kFLKExportErrorDomain, code,
                          "The video \"" + destinationURL().filename().string() + "\" could not be exported.",
                          reason, cause.recoverySuggestion);
}

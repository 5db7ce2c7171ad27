#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "core/exporter/FLKExportOptions.h"
#include "core/exporter/FLKExportRecorder.h"
#include "core/exporter/FLKFrameCalculator.h"
#include "core/media/FLKVideoEncoder.h"

inline constexpr const char* kFLKExportErrorDomain = "FLKExportErrorDomain";

// The MP4 writer of an export. Frames go to an H.264 encoder working on a
// thread of its own, into a silent temporary file; when rendering ends the
// video is remuxed with the scene's sound (or silence) beside the destination
// and moved into place only when complete. Frame n of the file is the
// renderer's buffer n + 1: the first buffer is dropped.
//
// Threads: record() on the controlling thread; appendPixelBuffer() and
// finish() afterwards on one thread at a time (the render thread).
// appendPixelBuffer() blocks while the encoder is a few frames behind.
class FLKVideoRecorder : public FLKExportRecorder {
public:
    enum ErrorCode : long { kDestinationUnusable = 1, kNoFrames = 2, kWriteFailed = 3, kMuxFailed = 4, kRenderFailed = 5 };

    explicit FLKVideoRecorder(std::shared_ptr<const FLKExportOptions> exportOptions);
    ~FLKVideoRecorder() override;  // an unfinished run leaves no file behind
    FLKVideoRecorder(const FLKVideoRecorder&) = delete;
    FLKVideoRecorder& operator=(const FLKVideoRecorder&) = delete;

    bool record(FLKError* error = nullptr) override;
    void appendPixelBuffer(const FLKPixelBuffer& pixelBuffer);
    // Queued for the encoder as it lies; the lease goes once it is converted.
    void appendLentPixels(FLKLentPixels pixels);
    // Completes the file; the delegate hears recorderDidFinish or didFailWithError.
    void finish();

    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& pixelBuffer) override { appendPixelBuffer(pixelBuffer); }
    bool takesLentPixels() const override { return true; }
    void didRenderToLentPixels(FLKRenderer&, FLKLentPixels pixels) override { appendLentPixels(std::move(pixels)); }
    void didFinishRenderingOffScreen(FLKRenderer&) override { finish(); }
    // Drops the unfinished file; the delegate hears didFailWithError.
    void didFailRenderingOffScreen(FLKRenderer&, const FLKError& error) override;

    bool isRecording() const { return isRecording_.load(); }
    bool didSkipFirstFrame() const { return didSkipFirstFrame_.load(); }
    // Frames written so far.
    std::uint64_t currentFrame() const { return currentFrame_.load(); }
    const FLKExportOptions& exportOptions() const { return *exportOptions_; }
    const std::filesystem::path& destinationURL() const override { return exportOptions_->destinationURL(); }
    const std::filesystem::path& tempDestinationURL() const { return tempDestinationURL_; }

    // The encoder's lookahead for frames of this size: -1 (its own) for small
    // frames, fewer frames for large ones.
    static int lookaheadFramesForSize(FLKSize size);

    // Why a file cannot be written at `destination`, before any work is done.
    static std::optional<FLKError> problemWithDestination(const std::filesystem::path& destination);

private:
    // Drops the first frame, stops after a failure, reports progress.
    void appendFrame(const std::function<bool(FLKError*)>& append);
    bool writeSound(FLKError* error);
    void finishSession(const std::optional<FLKError>& error);
    void notifyDidFinishWithPossibleError(const std::optional<FLKError>& error);
    void cleanup();
    FLKError exportError(long code, const FLKError& cause) const;

    const std::shared_ptr<const FLKExportOptions> exportOptions_;
    const std::shared_ptr<FLKFrameCalculator> frameCalculator_;
    const std::filesystem::path tempDestinationURL_;

    // The controlling thread until record() returns, then the appending thread.
    std::unique_ptr<FLKVideoEncoder> encoder_;
    std::optional<FLKError> writeError_;  // the first failed append; appending thread

    std::atomic<bool> isRecording_{false};
    std::atomic<bool> didSkipFirstFrame_{false};
    std::atomic<std::uint64_t> currentFrame_{0};
};

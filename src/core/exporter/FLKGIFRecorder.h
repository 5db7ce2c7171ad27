#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "core/exporter/FLKExportOptions.h"
#include "core/exporter/FLKFrameCalculator.h"
#include "core/exporter/FLKGIFEncoder.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKPixelBuffer.h"

// Writes the frames of a GIF export: drops the renderer's first buffer, thins
// the rest to the output rate, scales them to the video size and encodes them
// on a worker thread of its own, so rendering and encoding overlap. The file
// is written beside the destination and moved into place by a successful
// `finish`; on failure nothing is left at the destination.
//
// Threads: `record`, `finish` and the destructor from one controlling thread;
// `appendBuffer` from any one thread at a time (the render thread), between
// the two. `appendBuffer` blocks while the worker is a few frames behind.
class FLKGIFRecorder {
public:
    // Per-frame palettes are the default: on screen recordings they gave a
    // closer picture at the same size, and each frame is encoded while the
    // next renders instead of after the last.
    using PaletteMode = FLKGIFEncoder::PaletteMode;

    // Asked for in the file's properties: as many loops as can be had.
    static constexpr std::uint32_t kLoopCount = 0xFFFFFFFFu;
    // The NETSCAPE2.0 field has 16 bits; 0 there would mean "forever", which
    // is not what was asked for, so the count saturates.
    static constexpr std::uint16_t kLoopCountInFile = 0xFFFF;

    explicit FLKGIFRecorder(std::shared_ptr<const FLKExportOptions> exportOptions,
                            PaletteMode paletteMode = PaletteMode::PerFrame);
    ~FLKGIFRecorder();
    FLKGIFRecorder(const FLKGIFRecorder&) = delete;
    FLKGIFRecorder& operator=(const FLKGIFRecorder&) = delete;

    // Called with currentFrame / numFrames after each frame taken, on the
    // appending thread. Set before `record`.
    void setProgressHandler(std::function<void(double)> handler) { progressHandler_ = std::move(handler); }

    bool record(FLKError* error = nullptr);
    void appendBuffer(const FLKPixelBuffer& buffer);
    // Waits for the encoder, then moves the file into place.
    bool finish(FLKError* error = nullptr);

    bool isRecording() const;
    std::uint64_t currentFrame() const;
    bool didSkipFirstFrame() const;
    // Frames the GIF will have: the calculator's output count.
    std::uint64_t numFrames() const { return frameCalculator_->outputNumFrames(); }
    FLKSize videoSize() const { return exportOptions_->videoSize(); }
    const std::filesystem::path& destinationURL() const { return exportOptions_->destinationURL(); }

private:
    void encodeFrames();
    FLKError writeError(int code) const;

    const std::shared_ptr<const FLKExportOptions> exportOptions_;
    const PaletteMode paletteMode_;
    std::function<void(double)> progressHandler_;  // set before record, then read by the appending thread

    mutable std::mutex appendMutex_;
    const std::shared_ptr<FLKFrameCalculator> frameCalculator_;  // guarded by appendMutex_
    bool isRecording_ = false;                                   // guarded by appendMutex_
    bool didSkipFirstFrame_ = false;                             // guarded by appendMutex_
    std::uint64_t currentFrame_ = 0;                             // guarded by appendMutex_

    std::mutex queueMutex_;
    std::condition_variable queueChanged_;
    std::deque<FLKPixelBuffer> queue_;  // guarded by queueMutex_
    bool noMoreFrames_ = false;         // guarded by queueMutex_
    bool encoderFailed_ = false;        // guarded by queueMutex_

    // Owned by the controlling thread; the worker uses encoder_ and
    // encoderError_ between its start and the join in finish or the destructor.
    std::filesystem::path temporaryURL_;
    int fd_ = -1;
    std::unique_ptr<FLKGIFEncoder> encoder_;
    FLKError encoderError_;
    std::thread worker_;
};

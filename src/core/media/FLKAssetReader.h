#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "core/media/FLKAsset.h"
#include "core/media/FLKVideoFrame.h"
#include "core/platform/FLKError.h"

class FLKVideoDecoder;
class FLKFrameScaler;

// Same numbering as the reader statuses the timeline readers compare against.
enum class FLKAssetReaderStatus : int { Unknown = 0, Reading = 1, Completed = 2, Failed = 3, Cancelled = 4 };

// Decodes the time range [start, end) of an asset's first video track into
// NV12 frames of a fixed output size (720 x 720 unless told otherwise; the
// aspect ratio is not kept), turned upright as the file's display matrix
// says. Frames come out in presentation order, starting with the frame shown
// at `start`.
//
// Threads: startReading() and copyNextSampleBuffer() belong to one thread at a
// time (the reading queue); status() and cancelReading() may be called from
// any thread.
class FLKAssetReader {
public:
    static constexpr int kDefaultOutputSize = 720;

    FLKAssetReader(std::shared_ptr<FLKAsset> asset, double start, double end,
                   int outputWidth = kDefaultOutputSize, int outputHeight = kDefaultOutputSize);
    ~FLKAssetReader();
    FLKAssetReader(const FLKAssetReader&) = delete;
    FLKAssetReader& operator=(const FLKAssetReader&) = delete;

    // Before startReading(): decode on the reading thread alone.
    void setSingleThreaded(bool singleThreaded) { singleThreaded_ = singleThreaded; }
    // Opens the file and seeks; false (status Failed, error set) when it cannot.
    bool startReading();
    // The next frame of the range, or nullptr at its end (status Completed),
    // on failure (Failed) or after cancelReading() (Cancelled).
    std::shared_ptr<FLKVideoFrame> copyNextSampleBuffer();
    void cancelReading();

    FLKAssetReaderStatus status() const { return status_.load(); }
    // The failure, when status() is Failed. Read it from the reading thread.
    FLKError error() const;

    const std::shared_ptr<FLKAsset>& asset() const { return asset_; }
    double startTime() const { return start_; }
    double endTime() const { return end_; }

private:
    void fail(const std::string& reason);
    void finishReading();

    const std::shared_ptr<FLKAsset> asset_;
    const double start_;
    const double end_;
    const int outputWidth_;
    const int outputHeight_;
    bool singleThreaded_ = false;                // reading thread only
    std::unique_ptr<FLKVideoDecoder> decoder_;   // reading thread only
    std::unique_ptr<FLKFrameScaler> scaler_;     // reading thread only
    std::atomic<FLKAssetReaderStatus> status_{FLKAssetReaderStatus::Unknown};
    mutable std::mutex errorMutex_;              // guards error_
    FLKError error_;
};

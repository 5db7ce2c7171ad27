#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "core/gpu/FLKTextureBuffer.h"
#include "core/gpu/FLKTextureProvider.h"
#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetReader.h"
#include "core/platform/FLKError.h"
#include "core/platform/FLKSize.h"
#include "core/platform/FLKTimeUpdatable.h"

class FLKDispatchQueue;
class FLKFrameScaler;
class FLKUpdatableTimer;

// Plays a video file into textures at its own pace: each clock tick asks for
// the frame due since playback started, skipping late frames and holding back
// early ones, and loops or stops at the end.
//
// Threads: controls come from the main thread; decoding runs on the
// provider's rendering queue (mutex_ guards what both touch); texture() and
// refreshTexture() on the render thread.
class FLKURLVideoTextureProvider : public FLKTextureProvider,
                                   public FLKTimeUpdatable,
                                   public std::enable_shared_from_this<FLKURLVideoTextureProvider> {
public:
    // Seconds on a steady scale.
    using TimeSource = std::function<double()>;

    // `timer` drives playback (the display clock by default); `timeSource`
    // paces it (the steady clock by default).
    explicit FLKURLVideoTextureProvider(std::filesystem::path videoURL, std::shared_ptr<FLKUpdatableTimer> timer = {},
                                        TimeSource timeSource = {});
    ~FLKURLVideoTextureProvider() override;

    void play();
    void pause();
    void stop();
    // Moves playback to `seconds` of the file (done on the rendering queue).
    void setCurrentTime(double seconds);
    // False, with error() set, when the file has no video to play.
    bool prepareToPlay();
    bool isPrepared() const { return prepared_.load(); }
    bool isPlaying() const { return playing_.load(); }
    bool shouldLoop() const { return shouldLoop_.load(); }
    void setShouldLoop(bool shouldLoop) { shouldLoop_.store(shouldLoop); }
    std::optional<FLKError> error() const;

    // Seconds since playback (re)started.
    double currentTime() const override;
    // Schedules a texture update on the rendering queue; always taken.
    bool update(double time) override;
    // Takes the frame due now into the ring; at the end, loops or stops.
    void updateTexture();

    void refreshTexture() override;
    std::shared_ptr<FLKGPUTexture> texture() const override;

    const std::filesystem::path& videoURL() const { return videoURL_; }
    const std::shared_ptr<FLKAsset>& asset() const { return asset_; }
    double duration() const;
    double fps() const;
    FLKSize videoSize() const;
    int64_t numFrames() const;
    // Frames taken into the ring since creation.
    uint64_t numberOfTexturesShown() const { return texturesShown_.load(); }
    // The presentation time of the frame shown last, in seconds of the file.
    double shownSampleTime() const;

private:
    void rewindAssetReaderLocked(double start = 0);
    std::shared_ptr<FLKVideoFrame> nextTimeAdjustedSampleBufferLocked(double now);
    void updateWithSampleBufferLocked(const FLKVideoFrame& frame);
    double currentTimeLocked() const;
    double now() const;

    const std::filesystem::path videoURL_;
    const std::shared_ptr<FLKAsset> asset_;
    const std::weak_ptr<FLKUpdatableTimer> timer_;
    const TimeSource timeSource_;

    std::atomic<bool> prepared_{false};
    std::atomic<bool> playing_{false};
    std::atomic<bool> shouldLoop_{false};
    std::atomic<uint64_t> texturesShown_{0};

    mutable std::mutex mutex_;
    std::shared_ptr<FLKAssetReader> assetReader_;      // guarded by mutex_
    std::unique_ptr<FLKFrameScaler> scaler_;           // guarded by mutex_
    std::shared_ptr<FLKVideoFrame> pendingSampleBuffer_;  // guarded by mutex_
    std::optional<double> startDate_;                  // guarded by mutex_; set on the first read after a rewind
    std::optional<FLKError> error_;                    // guarded by mutex_
    double shownSampleTime_ = 0;                       // guarded by mutex_
    FLKTextureBuffer textureBuffer_;                   // guarded by mutex_; the default ring of 5
    std::shared_ptr<FLKTexture> currentTexture_;       // guarded by mutex_; the ring's current one

    // Last member: destroyed first, so blocks still queued find the rest intact.
    const std::shared_ptr<FLKDispatchQueue> textureRenderingQueue_;
};

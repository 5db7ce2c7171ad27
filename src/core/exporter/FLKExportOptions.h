#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

#include "core/exporter/FLKExportType.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"

// The options of one export run. Set once at creation; the two derived
// locations are fixed on first access, from any thread.
class FLKExportOptions {
public:
    FLKExportOptions(FLKExportType type, std::filesystem::path destinationURL, FLKRect frame, FLKSize videoSize,
                     std::uint64_t numFrames, std::uint64_t fps, std::uint64_t outputFps,
                     std::optional<std::filesystem::path> audioURL);

    static std::shared_ptr<FLKExportOptions> exportOptionsWithType(FLKExportType type,
                                                                   std::filesystem::path destinationURL, FLKRect frame,
                                                                   FLKSize videoSize, std::uint64_t numFrames,
                                                                   std::uint64_t fps, std::uint64_t outputFps,
                                                                   std::optional<std::filesystem::path> audioURL);

    FLKExportType type() const { return type_; }
    const std::filesystem::path& destinationURL() const { return destinationURL_; }
    // The part of the scene filmed, in scene units.
    FLKRect frame() const { return frame_; }
    // Output size in pixels.
    FLKSize videoSize() const { return videoSize_; }
    std::uint64_t numFrames() const { return numFrames_; }
    std::uint64_t fps() const { return fps_; }
    std::uint64_t outputFps() const { return outputFps_; }

    // The audio to mix in. Without one every MP4 still gets an audio track:
    // the application's silent resource (nullopt only when that is missing).
    std::optional<std::filesystem::path> audioURL() const;
    // Where an MP4 is written before it is moved into place: a fresh file in
    // the temporary export store. GIFs are written in place (nullopt).
    std::optional<std::filesystem::path> tempDestinationURL() const;

private:
    const FLKExportType type_;
    const std::filesystem::path destinationURL_;
    const FLKRect frame_;
    const FLKSize videoSize_;
    const std::uint64_t numFrames_;
    const std::uint64_t fps_;
    const std::uint64_t outputFps_;

    mutable std::mutex mutex_;
    mutable std::optional<std::filesystem::path> audioURL_;           // guarded by mutex_
    mutable bool audioURLFixed_ = false;                              // guarded by mutex_
    mutable std::optional<std::filesystem::path> tempDestinationURL_;  // guarded by mutex_
};

#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "core/media/FLKAsset.h"
#include "core/media/FLKAssetTrack.h"

// The video file behind a clip, probed once: its length and first video
// track. Opening goes through a replaceable opener so that tracks can be
// edited and tested without decoding real files.
class FLKVideoClipMedia {
public:
    using Opener = std::function<std::shared_ptr<const FLKVideoClipMedia>(const std::filesystem::path&)>;

    FLKVideoClipMedia(std::filesystem::path url, double duration, std::optional<FLKAssetTrack> videoTrack,
                      std::shared_ptr<FLKAsset> asset = nullptr)
        : url_(std::move(url)), duration_(duration), videoTrack_(std::move(videoTrack)), asset_(std::move(asset)) {}

    // Through the installed opener; by default the file is probed with FFmpeg.
    // Never nullptr: an unreadable file has length 0 and no video track.
    static std::shared_ptr<const FLKVideoClipMedia> mediaWithURL(const std::filesystem::path& url);
    // An empty opener restores the FFmpeg probe.
    static void setOpener(Opener opener);

    const std::filesystem::path& URL() const { return url_; }
    // Seconds; 0 when the file could not be read.
    double duration() const { return duration_; }
    const std::optional<FLKAssetTrack>& videoTrack() const { return videoTrack_; }
    // The probed asset; nullptr for media made without a file.
    const std::shared_ptr<FLKAsset>& asset() const { return asset_; }

private:
    const std::filesystem::path url_;
    const double duration_;
    const std::optional<FLKAssetTrack> videoTrack_;
    const std::shared_ptr<FLKAsset> asset_;
};

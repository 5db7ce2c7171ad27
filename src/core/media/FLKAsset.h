#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/media/FLKAssetTrack.h"

// A media file probed once when opened: its length and streams. Never throws:
// a file that cannot be opened gives an asset of duration 0 whose
// failureReason() says why (naming the file).
class FLKAsset {
public:
    explicit FLKAsset(std::string path);
    static std::shared_ptr<FLKAsset> assetWithPath(std::string path);

    const std::string& path() const { return path_; }
    // Seconds; 0 when unreadable.
    double duration() const { return duration_; }
    bool isReadable() const { return failureReason_.empty(); }
    const std::string& failureReason() const { return failureReason_; }

    bool hasVideo() const { return videoTrack_.has_value(); }
    bool hasAudio() const { return audioTrack_.has_value(); }
    // The first video / audio stream of the file.
    const std::optional<FLKAssetTrack>& videoTrack() const { return videoTrack_; }
    const std::optional<FLKAssetTrack>& audioTrack() const { return audioTrack_; }
    const std::vector<FLKAssetTrack>& tracks() const { return tracks_; }

private:
    void probe();

    std::string path_;
    double duration_ = 0;
    std::string failureReason_;
    std::vector<FLKAssetTrack> tracks_;
    std::optional<FLKAssetTrack> videoTrack_;
    std::optional<FLKAssetTrack> audioTrack_;
};

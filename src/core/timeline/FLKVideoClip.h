#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "core/timeline/FLKTimelineClip.h"
#include "core/timeline/FLKVideoClipMedia.h"

// A range of a video file (`clipRange`, seconds of the file's own time)
// placed at a range of timeline time (`timeRange`).
class FLKVideoClip : public FLKTimelineClip {
public:
    FLKVideoClip(std::string identifier, std::shared_ptr<const FLKVideoClipMedia> media, FLKTimeRange timeRange,
                 FLKTimeRange clipRange);

    static std::shared_ptr<FLKVideoClip> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKVideoClip"; }

    int64_t type() const override { return kVideo; }
    double duration() const override { return clipRange_.length(); }
    double shiftDuration() const override { return duration(); }

    const FLKTimeRange& clipRange() const { return clipRange_; }
    const std::shared_ptr<const FLKVideoClipMedia>& media() const { return media_; }
    const std::shared_ptr<FLKAsset>& asset() const { return media_->asset(); }
    const std::filesystem::path& assetURL() const { return media_->URL(); }
    const std::optional<FLKAssetTrack>& videoTrack() const { return media_->videoTrack(); }

    // The video track's nominal frame rate rounded up; 0 without a video track.
    uint64_t fps() const;
    // Frames of the video track, computed on first request; 0 without one.
    uint64_t numFrames() const;

    double clipTimeForTimelineTime(double t) const { return clipRange_.start + (t - timeRange().start); }

    std::shared_ptr<FLKTimelineClip> clipByOffsetingWithTime(double t) const override;
    std::shared_ptr<FLKTimelineClip> clipWithTimeRange(FLKTimeRange range) const override;
    std::shared_ptr<FLKTimelineClip> copy() const override;

    // The clip losing the part before `t` (the clip itself when t is its start).
    std::shared_ptr<FLKVideoClip> videoClipByTrimmingLeftFromTimelineTime(double t) const;
    // The clip losing the part after `t` (the clip itself when t is its end).
    std::shared_ptr<FLKVideoClip> videoClipByTrimmingRightFromTimelineTime(double t) const;
    // The halves "<id>_l" and "<id>_r", left first.
    std::pair<std::shared_ptr<FLKVideoClip>, std::shared_ptr<FLKVideoClip>> videoClipBySplittingAtTimelineTime(
        double t) const;

    bool isEqual(const FLKTimelineClip& other) const override;
    size_t hash() const override;

private:
    std::shared_ptr<FLKVideoClip> withRanges(std::string identifier, FLKTimeRange timeRange,
                                             FLKTimeRange clipRange) const;

    const FLKTimeRange clipRange_;
    const std::shared_ptr<const FLKVideoClipMedia> media_;
    mutable std::atomic<uint64_t> numFrames_{0};  // cache; 0 = not yet computed
};

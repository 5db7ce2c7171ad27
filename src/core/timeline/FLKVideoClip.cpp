#include "core/timeline/FLKVideoClip.h"

#include <cmath>
#include <functional>

#include "core/platform/FLKFileSerializationContext.h"

FLK_REGISTER_SERIALIZABLE(FLKVideoClip);

namespace {
// Documents are untrusted: a stored path that is absolute or climbs out with
// ".." keeps only its file name, inside the document's media folder, so that
// saving the document never copies a file from elsewhere into it.
std::string confinedMediaPath(const std::string& relativePath) {
    const std::filesystem::path path(relativePath);
    bool climbs = false;
    for (const auto& part : path) climbs = climbs || part == "..";
    if (!path.is_absolute() && !climbs) return relativePath;
    return (std::filesystem::path("media") / path.filename()).string();
}
}  // namespace

FLKVideoClip::FLKVideoClip(std::string identifier, std::shared_ptr<const FLKVideoClipMedia> media,
                           FLKTimeRange timeRange, FLKTimeRange clipRange)
    : FLKTimelineClip(std::move(identifier), "", timeRange),
      clipRange_(clipRange),
      media_(media ? std::move(media) : std::make_shared<FLKVideoClipMedia>("", 0, std::nullopt)) {}

std::shared_ptr<FLKVideoClip> FLKVideoClip::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    const auto url = flk::URLWithRelativeMediaPath(confinedMediaPath(dictionary.value("assetURL", std::string())));
    return std::make_shared<FLKVideoClip>(dictionary.value("identifier", std::string()),
                                          FLKVideoClipMedia::mediaWithURL(url),
                                          FLKTimeRange::rangeWithDictionary(dictionary.value("timeRange", FLKJSON())),
                                          FLKTimeRange::rangeWithDictionary(dictionary.value("clipRange", FLKJSON())));
}

FLKJSON FLKVideoClip::serialized() const {
    return FLKJSON{{"className", className()},
                   {"identifier", identifier()},
                   {"assetURL", flk::relativeMediaPath(assetURL())},
                   {"timeRange", timeRange().serialized()},
                   {"clipRange", clipRange_.serialized()}};
}

uint64_t FLKVideoClip::fps() const {
    const auto& track = videoTrack();
    if (!track) return 0;
    return static_cast<uint64_t>(std::ceil(track->nominalFrameRate));
}

uint64_t FLKVideoClip::numFrames() const {
    uint64_t cached = numFrames_.load();
    if (cached != 0) return cached;
    const auto& track = videoTrack();
    if (!track || track->nominalFrameRate <= 0) return 0;
    const float framePeriod = 1.0f / track->nominalFrameRate;
    cached = static_cast<uint64_t>(std::llround(track->duration / framePeriod));
    numFrames_.store(cached);
    return cached;
}

std::shared_ptr<FLKVideoClip> FLKVideoClip::withRanges(std::string identifier, FLKTimeRange timeRange,
                                                       FLKTimeRange clipRange) const {
    return std::make_shared<FLKVideoClip>(std::move(identifier), media_, timeRange, clipRange);
}

std::shared_ptr<FLKTimelineClip> FLKVideoClip::clipByOffsetingWithTime(double t) const {
    return withRanges(identifier(), timeRange().offsetBy(t), clipRange_);
}

std::shared_ptr<FLKTimelineClip> FLKVideoClip::clipWithTimeRange(FLKTimeRange range) const {
    return withRanges(identifier(), range, clipRange_);
}

std::shared_ptr<FLKTimelineClip> FLKVideoClip::copy() const {
    auto clip = withRanges(identifier(), timeRange(), clipRange_);
    clip->setName(name());
    return clip;
}

std::shared_ptr<FLKVideoClip> FLKVideoClip::videoClipByTrimmingLeftFromTimelineTime(double t) const {
    const double d = t - timeRange().start;
    if (d == 0) return std::static_pointer_cast<FLKVideoClip>(std::const_pointer_cast<FLKTimelineClip>(shared_from_this()));
    return withRanges(identifier(), {timeRange().start, timeRange().end - d}, {clipRange_.start + d, clipRange_.end});
}

std::shared_ptr<FLKVideoClip> FLKVideoClip::videoClipByTrimmingRightFromTimelineTime(double t) const {
    const double d = timeRange().end - t;
    if (d == 0) return std::static_pointer_cast<FLKVideoClip>(std::const_pointer_cast<FLKTimelineClip>(shared_from_this()));
    const double kept = duration() - d;
    return withRanges(identifier(), {timeRange().start, timeRange().start + kept},
                      {clipRange_.start, clipRange_.start + kept});
}

std::pair<std::shared_ptr<FLKVideoClip>, std::shared_ptr<FLKVideoClip>> FLKVideoClip::videoClipBySplittingAtTimelineTime(
    double t) const {
    const double o = t - timeRange().start;
    auto left = withRanges(identifier() + "_l", {timeRange().start, t}, {clipRange_.start, clipRange_.start + o});
    auto right = withRanges(identifier() + "_r", {t, t + duration() - o}, {clipRange_.start + o, clipRange_.end});
    return {left, right};
}

bool FLKVideoClip::isEqual(const FLKTimelineClip& other) const {
    return dynamic_cast<const FLKVideoClip*>(&other) != nullptr && other.identifier() == identifier();
}

size_t FLKVideoClip::hash() const { return std::hash<std::string>{}(identifier()); }

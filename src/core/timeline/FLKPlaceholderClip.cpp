#include "core/timeline/FLKPlaceholderClip.h"

#include <algorithm>
#include <functional>

FLKJSON FLKPlaceholderClip::serialized() const {
    return FLKJSON{{"className", className()}, {"identifier", identifier()}, {"timeRange", timeRange().serialized()}};
}

std::shared_ptr<FLKTimelineClip> FLKPlaceholderClip::clipByOffsetingWithTime(double t) const {
    const double start = std::max(0.0, timeRange().start + t);
    return clipWithTimeRange({start, start + duration()});
}

std::shared_ptr<FLKTimelineClip> FLKPlaceholderClip::clipWithTimeRange(FLKTimeRange range) const {
    return std::make_shared<FLKPlaceholderClip>(identifier(), range);
}

std::shared_ptr<FLKTimelineClip> FLKPlaceholderClip::copy() const {
    auto clip = clipWithTimeRange(timeRange());
    clip->setName(name());
    return clip;
}

bool FLKPlaceholderClip::isEqual(const FLKTimelineClip& other) const {
    return dynamic_cast<const FLKPlaceholderClip*>(&other) != nullptr && other.identifier() == identifier();
}

size_t FLKPlaceholderClip::hash() const { return std::hash<std::string>{}(identifier()); }

#pragma once

#include "core/timeline/FLKTimelineClip.h"

// Stands in on a track for a clip that is still being prepared (a clip being
// dragged, a recording being copied). It is never stored in a document: its
// class is not registered, so a track read back leaves it out.
class FLKPlaceholderClip : public FLKTimelineClip {
public:
    FLKPlaceholderClip(std::string identifier, FLKTimeRange timeRange)
        : FLKTimelineClip(std::move(identifier), "Placeholder", timeRange) {}

    FLKJSON serialized() const override;
    std::string className() const override { return "FLKPlaceholderClip"; }

    int64_t type() const override { return kPlaceholder; }
    double duration() const override { return timeRange().length(); }
    double shiftDuration() const override { return duration(); }

    // Never before time 0: the start is clamped and the length kept.
    std::shared_ptr<FLKTimelineClip> clipByOffsetingWithTime(double t) const override;
    std::shared_ptr<FLKTimelineClip> clipWithTimeRange(FLKTimeRange range) const override;
    std::shared_ptr<FLKTimelineClip> copy() const override;

    bool isEqual(const FLKTimelineClip& other) const override;
    size_t hash() const override;
};

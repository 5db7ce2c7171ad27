#pragma once

#include <cstddef>
#include <memory>

class FLKTimeline;

// Read-only questions about a timeline for the editing layer.
class FLKTimelineQuery {
public:
    explicit FLKTimelineQuery(std::shared_ptr<FLKTimeline> timeline) : timeline_(std::move(timeline)) {}

    const std::shared_ptr<FLKTimeline>& timeline() const { return timeline_; }
    size_t numTracks() const;
    // 0 for an index past the last track.
    size_t numClipsForTrackAtIndex(size_t index) const;

private:
    const std::shared_ptr<FLKTimeline> timeline_;
};

#include "core/timeline/FLKTimelineQuery.h"

#include "core/timeline/FLKTimeline.h"

size_t FLKTimelineQuery::numTracks() const { return timeline_ ? timeline_->tracks().size() : 0; }

size_t FLKTimelineQuery::numClipsForTrackAtIndex(size_t index) const {
    if (!timeline_) return 0;
    const auto tracks = timeline_->tracks();
    return index < tracks.size() ? tracks[index]->clips().size() : 0;
}

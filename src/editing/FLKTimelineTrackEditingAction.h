#pragma once

#include <memory>

#include "core/timeline/FLKTimelineTrack.h"
#include "editing/FLKAction.h"

// An undoable change of a track's clip list. The clips themselves are shared,
// only the list is kept; every edit is recorded, even one that changed nothing.
class FLKTimelineTrackEditingAction : public FLKAction {
public:
    static std::shared_ptr<FLKTimelineTrackEditingAction> actionWithTrack(std::shared_ptr<FLKTimelineTrack> track);
    explicit FLKTimelineTrackEditingAction(std::shared_ptr<FLKTimelineTrack> track);

    void finalize();

    std::shared_ptr<FLKActionResult> execute() override;
    std::shared_ptr<FLKActionResult> undo() override;

    const std::shared_ptr<FLKTimelineTrack>& track() const { return track_; }
    const FLKTimelineTrack::Clips& initialClips() const { return initialClips_; }
    const FLKTimelineTrack::Clips& finalClips() const { return finalClips_; }

private:
    std::shared_ptr<FLKTimelineTrack> track_;
    FLKTimelineTrack::Clips initialClips_;
    FLKTimelineTrack::Clips finalClips_;
};

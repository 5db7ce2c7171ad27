#include "editing/FLKTimelineTrackEditingAction.h"

std::shared_ptr<FLKTimelineTrackEditingAction> FLKTimelineTrackEditingAction::actionWithTrack(
    std::shared_ptr<FLKTimelineTrack> track) {
    return std::make_shared<FLKTimelineTrackEditingAction>(std::move(track));
}

FLKTimelineTrackEditingAction::FLKTimelineTrackEditingAction(std::shared_ptr<FLKTimelineTrack> track)
    : track_(std::move(track)) {
    if (track_) initialClips_ = track_->clips();
}

void FLKTimelineTrackEditingAction::finalize() {
    if (track_) finalClips_ = track_->clips();
}

std::shared_ptr<FLKActionResult> FLKTimelineTrackEditingAction::execute() {
    if (!track_) return nullptr;
    track_->setClips(finalClips_);
    return FLKActionResult::resultWithAction(shared_from_this(), track_);
}

std::shared_ptr<FLKActionResult> FLKTimelineTrackEditingAction::undo() {
    if (!track_) return nullptr;
    track_->setClips(initialClips_);
    return FLKActionResult::resultWithAction(shared_from_this(), track_);
}

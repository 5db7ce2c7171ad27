#include "editing/FLKTimelineVideoTransitionClipViewModel.h"

FLKTimelineVideoTransitionClipViewModel::FLKTimelineVideoTransitionClipViewModel(
    std::shared_ptr<FLKVideoTransitionClip> clip)
    : FLKTimelineClipViewModel(std::move(clip)) {}

std::shared_ptr<FLKVideoTransitionClip> FLKTimelineVideoTransitionClipViewModel::videoClip() const {
    return std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip());
}

FLKSize FLKTimelineVideoTransitionClipViewModel::cellSize() const {
    return {clip()->duration() * kPointsPerSecond, kCellHeight};
}

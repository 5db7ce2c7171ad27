#include "editing/FLKTimelineClipViewModel.h"

#include <cmath>

#include "editing/FLKTimelineVideoTransitionClipViewModel.h"

std::shared_ptr<FLKTimelineClipViewModel> FLKTimelineClipViewModel::viewModelWithClip(
    std::shared_ptr<FLKTimelineClip> clip) {
    if (auto transition = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip)) {
        return std::make_shared<FLKTimelineVideoTransitionClipViewModel>(std::move(transition));
    }
    return std::make_shared<FLKTimelineClipViewModel>(std::move(clip));
}

FLKTimelineClipViewModel::FLKTimelineClipViewModel(std::shared_ptr<FLKTimelineClip> clip) : clip_(std::move(clip)) {}

void FLKTimelineClipViewModel::setClip(std::shared_ptr<FLKTimelineClip> clip) {
    if (clip == clip_) return;
    clip_ = std::move(clip);
    didChangeProperty("clip");
}

FLKSize FLKTimelineClipViewModel::cellSize() const {
    const FLKTimeRange range = drawRange();
    return {flooredPoints(range.end - range.start), kCellHeight};
}

void FLKTimelineClipViewModel::setSelected(bool selected) {
    if (selected == isSelected_) return;
    isSelected_ = selected;
    didChangeProperty("isSelected");
}

double FLKTimelineClipViewModel::flooredPoints(double seconds) {
    return std::floor(static_cast<float>(seconds * kPointsPerSecond));
}

#include "editing/FLKTimelineVideoTrackViewModel.h"

#include <algorithm>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKTransition.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKUserFeedback.h"

namespace {
std::shared_ptr<FLKSerializable> transitionOnSharedContext(const std::string& functionName) {
    return FLKTransition::transitionWithFunctionName(functionName, FLKContext::sharedContext());
}
}  // namespace

FLKTimelineVideoTrackViewModel::FLKTimelineVideoTrackViewModel(std::shared_ptr<FLKTimelineVideoTrack> track,
                                                               FLKActionPipeline* pipeline)
    : FLKTimelineTrackViewModel(std::move(track), pipeline), transitionMaker_(transitionOnSharedContext) {}

std::shared_ptr<FLKTimelineVideoTrack> FLKTimelineVideoTrackViewModel::videoTrack() const {
    return std::static_pointer_cast<FLKTimelineVideoTrack>(track());
}

std::shared_ptr<FLKVideoClip> FLKTimelineVideoTrackViewModel::videoClipAtPlayHead(
    const std::shared_ptr<FLKTimelineClipViewModel>& viewModel, bool strictlyInside) const {
    if (!viewModel || !indexOfClip(viewModel->clip())) return nullptr;
    auto clip = std::dynamic_pointer_cast<FLKVideoClip>(viewModel->clip());
    if (!clip) return nullptr;
    const double t = track()->currentTime();
    const FLKTimeRange range = clip->timeRange();
    const bool inside = strictlyInside ? (range.start < t && t < range.end) : (range.start <= t && t <= range.end);
    return inside ? clip : nullptr;
}

void FLKTimelineVideoTrackViewModel::trimLeft(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel) {
    auto clip = videoClipAtPlayHead(viewModel, false);
    if (!clip) return FLKUserFeedback::shared().beep();
    beginAction();
    videoTrack()->trimClipLeftFromTimelineTime(clip, track()->currentTime());
    endAction();
}

void FLKTimelineVideoTrackViewModel::trimRight(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel) {
    auto clip = videoClipAtPlayHead(viewModel, false);
    if (!clip) return FLKUserFeedback::shared().beep();
    beginAction();
    videoTrack()->trimClipRightFromTimelineTime(clip, track()->currentTime());
    endAction();
}

void FLKTimelineVideoTrackViewModel::split(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel) {
    auto clip = videoClipAtPlayHead(viewModel, true);
    if (!clip) return FLKUserFeedback::shared().beep();
    beginAction();
    videoTrack()->splitClip(clip, track()->currentTime());
    endAction();
}

void FLKTimelineVideoTrackViewModel::remove(const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& viewModels) {
    if (viewModels.empty()) return;
    beginAction();
    // Each cell's clip is read when its turn comes: removing a transition
    // moves its incoming clip, whose cell then holds the moved copy.
    for (const auto& viewModel : viewModels) removeClip(viewModel->clip());
    endAction();
}

void FLKTimelineVideoTrackViewModel::loadVideoClipWithURL(const std::filesystem::path& url) {
    beginAction();
    videoTrack()->addClip(videoTrack()->createClipWithVideoURL(url));
    endAction();
}

void FLKTimelineVideoTrackViewModel::setTransitionClipViewModels(
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> viewModels) {
    transitionClipViewModels_ = std::move(viewModels);
    didChangeProperty("transitionClipViewModels");
}

void FLKTimelineVideoTrackViewModel::addTransition() {
    auto transition = transitionMaker_ ? transitionMaker_(kTransitionFunctionName) : nullptr;
    if (!transition) {
        flk::log("Could not make the %s transition", kTransitionFunctionName);
        return FLKUserFeedback::shared().beep();
    }
    applyTransition(transition);
}

bool FLKTimelineVideoTrackViewModel::canJoin(const std::shared_ptr<FLKVideoClip>& from,
                                             const std::shared_ptr<FLKVideoClip>& to) const {
    if (!from || !to) return false;
    auto fromIndex = track()->indexOfClip(from);
    auto toIndex = track()->indexOfClip(to);
    if (!fromIndex || !toIndex || *toIndex != *fromIndex + 1) return false;
    return from->duration() >= kTransitionDuration && to->duration() >= kTransitionDuration;
}

void FLKTimelineVideoTrackViewModel::applyTransition(const std::shared_ptr<FLKSerializable>& transition) {
    if (transitionClipViewModels_.size() < 2) return;
    auto from = std::dynamic_pointer_cast<FLKVideoClip>(transitionClipViewModels_[0]->clip());
    auto to = std::dynamic_pointer_cast<FLKVideoClip>(transitionClipViewModels_[1]->clip());
    if (!transition || !canJoin(from, to)) return FLKUserFeedback::shared().beep();
    beginAction();
    videoTrack()->addTransition(transition, from, to, kTransitionDuration);
    updateCellsForClip(to);
    endAction();
}

void FLKTimelineVideoTrackViewModel::removeTransition(const std::shared_ptr<FLKVideoTransitionClip>& transitionClip) {
    if (!transitionClip) return;
    videoTrack()->removeClip(transitionClip);
    auto incoming = videoTrack()->clipWithIdentifier(transitionClip->toVideoClipIdentifier());
    if (!incoming) return;
    videoTrack()->replaceClip(incoming, incoming->clipByOffsetingWithTime(transitionClip->duration()));
    updateCellsForClip(incoming);
}

void FLKTimelineVideoTrackViewModel::removeClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    if (!clip) return;
    switch (clip->type()) {
        case FLKTimelineClip::kVideo:
            videoTrack()->removeClip(clip);
            break;
        case FLKTimelineClip::kTransition:
            removeTransition(std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip));
            break;
        default:
            break;
    }
}

void FLKTimelineVideoTrackViewModel::beginDraggingForViewModel(
    const std::shared_ptr<FLKTimelineClipViewModel>& viewModel) {
    if (draggingViewModel_ || !viewModel || viewModel->clip()->type() != FLKTimelineClip::kVideo) return;
    if (!indexOfClip(viewModel->clip())) return;
    beginAction();
    draggingViewModel_ = viewModel;
    placeholderClip_ = std::make_shared<FLKPlaceholderClip>("", viewModel->clip()->timeRange());
    track()->replaceClip(viewModel->clip(), placeholderClip_);
    didChangeProperty("draggingViewModel");
}

void FLKTimelineVideoTrackViewModel::moveDraggingPlaceholderToIndexPath(const FLKIndexPath& indexPath) {
    if (!placeholderClip_) return;
    auto index = track()->indexOfClip(placeholderClip_);
    if (!index) return;
    const size_t target = std::min(indexPath.item, track()->clips().size() - 1);
    if (*index == target) return;

    track()->removeClip(placeholderClip_);
    const auto clips = track()->clips();
    const double start = target < clips.size() ? clips[target]->timeRange().start : track()->duration();
    auto moved = std::static_pointer_cast<FLKPlaceholderClip>(
        placeholderClip_->clipWithTimeRange({start, start + placeholderClip_->duration()}));
    placeholderClip_ = moved;
    track()->insertClip(moved, target);
}

void FLKTimelineVideoTrackViewModel::endDraggingToIndexPath(const FLKIndexPath& indexPath) {
    if (!placeholderClip_) return;
    moveDraggingPlaceholderToIndexPath(indexPath);
    track()->replaceClip(placeholderClip_, draggingViewModel_->clip()->clipWithTimeRange(placeholderClip_->timeRange()));
    endAction();
    draggingViewModel_.reset();
    placeholderClip_.reset();
    didChangeProperty("draggingViewModel");
}

void FLKTimelineVideoTrackViewModel::selectAlone(FLKTimelineTrackViewModel& viewModel,
                                                 const std::shared_ptr<FLKTimelineClipViewModel>& clip) {
    if (auto* delegate = viewModel.selectionDelegate()) delegate->trackViewModel(viewModel, clip);
}

void FLKTimelineVideoTrackViewModel::trimLeftWithViewModel(FLKTimelineTrackViewModel& viewModel) {
    auto hovered = viewModel.hoveredOverViewModel();
    if (!hovered) return;
    selectAlone(viewModel, hovered);
    trimLeft(hovered);
}

void FLKTimelineVideoTrackViewModel::trimRightWithViewModel(FLKTimelineTrackViewModel& viewModel) {
    auto hovered = viewModel.hoveredOverViewModel();
    if (!hovered) return;
    selectAlone(viewModel, hovered);
    trimRight(hovered);
}

void FLKTimelineVideoTrackViewModel::deleteWithViewModel(FLKTimelineTrackViewModel& viewModel) {
    auto selected = viewModel.selectedViewModels();
    if (selected.empty()) return;
    if (auto* delegate = viewModel.selectionDelegate()) delegate->deselectAllForTrackViewModel(viewModel);
    remove(selected);
}

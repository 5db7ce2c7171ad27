#include "editing/FLKTimelineTrackViewModel.h"

#include <algorithm>

FLKTimelineTrackViewModel::FLKTimelineTrackViewModel(std::shared_ptr<FLKTimelineTrack> track,
                                                     FLKActionPipeline* pipeline)
    : track_(std::move(track)), pipeline_(pipeline ? pipeline : &FLKActionPipeline::sharedPipeline()) {
    reloadClipViewModels();
    clipsObserverToken_ = track_->addClipsObserver([this] { reloadClipViewModels(); });
}

FLKTimelineTrackViewModel::~FLKTimelineTrackViewModel() { track_->removeClipsObserver(clipsObserverToken_); }

std::shared_ptr<FLKTimelineClipViewModel> FLKTimelineTrackViewModel::viewModelAtIndex(size_t index) const {
    return index < clipViewModels_.size() ? clipViewModels_[index] : nullptr;
}

std::optional<size_t> FLKTimelineTrackViewModel::indexOfViewModel(const FLKTimelineClipViewModel* viewModel) const {
    for (size_t i = 0; i < clipViewModels_.size(); ++i) {
        if (clipViewModels_[i].get() == viewModel) return i;
    }
    return std::nullopt;
}

std::optional<size_t> FLKTimelineTrackViewModel::indexOfClip(const std::shared_ptr<FLKTimelineClip>& clip) const {
    for (size_t i = 0; i < clipViewModels_.size(); ++i) {
        if (flk::sameClip(clipViewModels_[i]->clip(), clip)) return i;
    }
    return std::nullopt;
}

std::vector<std::shared_ptr<FLKTimelineClipViewModel>> FLKTimelineTrackViewModel::selectedViewModels() const {
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> selected;
    for (const auto& viewModel : clipViewModels_) {
        if (viewModel->isSelected()) selected.push_back(viewModel);
    }
    return selected;
}

void FLKTimelineTrackViewModel::setHoveredOverViewModel(std::shared_ptr<FLKTimelineClipViewModel> viewModel) {
    if (viewModel == hoveredOverViewModel_) return;
    hoveredOverViewModel_ = std::move(viewModel);
    didChangeProperty("hoveredOverViewModel");
}

void FLKTimelineTrackViewModel::beginAction() {
    if (actionDepth_++ > 0) return;
    currentAction_ = FLKTimelineTrackEditingAction::actionWithTrack(track_);
    didChangeProperty("currentAction");
}

void FLKTimelineTrackViewModel::endAction() {
    if (actionDepth_ == 0 || --actionDepth_ > 0) return;
    auto action = std::move(currentAction_);
    action->finalize();
    pipeline_->execute(action);
    didChangeProperty("currentAction");
}

void FLKTimelineTrackViewModel::updateCellsForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    auto index = indexOfClip(clip);
    if (!index) return;
    if (updatesHandler_) updatesHandler_({*index});
}

void FLKTimelineTrackViewModel::reloadClipViewModels() {
    auto unused = clipViewModels_;
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> viewModels;
    for (const auto& clip : track_->clips()) viewModels.push_back(takeViewModelForClip(unused, clip));

    if (hoveredOverViewModel_ &&
        std::find(viewModels.begin(), viewModels.end(), hoveredOverViewModel_) == viewModels.end()) {
        hoveredOverViewModel_.reset();
    }
    ClipsDiff diff = diffBetween(clipViewModels_, viewModels);
    clipViewModels_ = std::move(viewModels);
    didChangeProperty("clipViewModels");
    if (diffHandler_ && !diff.isEmpty()) diffHandler_(diff);
}

std::shared_ptr<FLKTimelineClipViewModel> FLKTimelineTrackViewModel::takeViewModelForClip(
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& unused, const std::shared_ptr<FLKTimelineClip>& clip) {
    auto it = std::find_if(unused.begin(), unused.end(),
                           [&](const auto& viewModel) { return flk::sameClip(viewModel->clip(), clip); });
    if (it == unused.end()) return FLKTimelineClipViewModel::viewModelWithClip(clip);
    auto viewModel = *it;
    unused.erase(it);
    viewModel->setClip(clip);
    return viewModel;
}

namespace {
// Positions (into `values`) of one longest strictly increasing run; O(n²),
// rows are short.
std::vector<bool> longestIncreasingMembers(const std::vector<size_t>& values) {
    const size_t n = values.size();
    std::vector<size_t> length(n, 1), previous(n, n);
    size_t best = n;
    for (size_t i = 0; i < n; ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (values[j] < values[i] && length[j] + 1 > length[i]) {
                length[i] = length[j] + 1;
                previous[i] = j;
            }
        }
        if (best == n || length[i] > length[best]) best = i;
    }
    std::vector<bool> members(n, false);
    for (size_t i = best; i < n; i = previous[i]) members[i] = true;
    return members;
}
}  // namespace

// Cells that only shift because others came or went are not moves; among the
// cells kept, those outside the longest run still in order are.
FLKTimelineTrackViewModel::ClipsDiff FLKTimelineTrackViewModel::diffBetween(
    const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& before,
    const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& after) {
    auto indexIn = [](const auto& list, const auto& viewModel) -> std::optional<size_t> {
        auto it = std::find(list.begin(), list.end(), viewModel);
        if (it == list.end()) return std::nullopt;
        return static_cast<size_t>(it - list.begin());
    };
    ClipsDiff diff;
    std::vector<std::pair<size_t, size_t>> kept;
    for (size_t i = 0; i < before.size(); ++i) {
        if (auto to = indexIn(after, before[i])) {
            kept.emplace_back(i, *to);
        } else {
            diff.removed.push_back(i);
        }
    }
    for (size_t i = 0; i < after.size(); ++i) {
        if (!indexIn(before, after[i])) diff.inserted.push_back(i);
    }
    std::vector<size_t> newIndexes;
    for (const auto& [from, to] : kept) newIndexes.push_back(to);
    auto inOrder = longestIncreasingMembers(newIndexes);
    for (size_t k = 0; k < kept.size(); ++k) {
        if (!inOrder[k]) diff.moved.push_back(kept[k]);
    }
    return diff;
}

#include "editing/FLKTimelinePanelViewModel.h"

#include <algorithm>

FLKTimelinePanelViewModel::FLKTimelinePanelViewModel(std::shared_ptr<FLKTimeline> timeline,
                                                     std::shared_ptr<FLKSceneQuerying> sceneQuery,
                                                     FLKActionPipeline* pipeline)
    : timeline_(std::move(timeline)),
      sceneQuery_(std::move(sceneQuery)),
      pipeline_(pipeline ? pipeline : &FLKActionPipeline::sharedPipeline()),
      reportedTime_(timeline_->currentTime()),
      reportedPlaying_(timeline_->isPlaying()) {
    reloadTrackViewModels();
    tracksObserverToken_ = timeline_->addTracksObserver([this] { reloadTrackViewModels(); });
}

FLKTimelinePanelViewModel::~FLKTimelinePanelViewModel() {
    timeline_->removeTracksObserver(tracksObserverToken_);
    for (const auto& viewModel : trackViewModels_) detach(viewModel);
}

// Tracks

void FLKTimelinePanelViewModel::reloadTrackViewModels() {
    TrackViewModels viewModels;
    for (const auto& track : timeline_->tracks()) {
        auto existing = std::find_if(trackViewModels_.begin(), trackViewModels_.end(),
                                     [&](const auto& viewModel) { return viewModel->track() == track; });
        viewModels.push_back(existing != trackViewModels_.end() ? *existing : makeTrackViewModel(track));
    }
    for (const auto& old : trackViewModels_) {
        if (std::find(viewModels.begin(), viewModels.end(), old) == viewModels.end()) detach(old);
    }
    trackViewModels_ = std::move(viewModels);
    layoutViewModel_->setTrackViewModels(trackViewModels_);
    didChangeProperty("trackViewModels");
    refreshSelectedClipIndexes();
}

std::shared_ptr<FLKTimelineTrackViewModel> FLKTimelinePanelViewModel::makeTrackViewModel(
    const std::shared_ptr<FLKTimelineTrack>& track) {
    std::shared_ptr<FLKTimelineTrackViewModel> viewModel;
    if (auto videoTrack = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) {
        viewModel = std::make_shared<FLKTimelineVideoTrackViewModel>(videoTrack, pipeline_);
    } else {
        viewModel = std::make_shared<FLKTimelineTrackViewModel>(track, pipeline_);
    }
    attach(viewModel);
    return viewModel;
}

void FLKTimelinePanelViewModel::attach(const std::shared_ptr<FLKTimelineTrackViewModel>& viewModel) {
    const FLKTimelineTrackViewModel* row = viewModel.get();
    viewModel->setSelectionDelegate(this);
    viewModel->setDiffHandler([this, row](const auto& diff) { forwardDiff(row, diff); });
    viewModel->setUpdatesHandler([this, row](const auto& items) { forwardUpdates(row, items); });
    auto token = viewModel->addPropertyObserver([this](const std::string& property) {
        if (property == "clipViewModels") refreshSelectedClipIndexes();
        if (property == "draggingViewModel") didChangeProperty("isDragging");
    });
    attachments_[row] = {token};
}

void FLKTimelinePanelViewModel::detach(const std::shared_ptr<FLKTimelineTrackViewModel>& viewModel) {
    auto it = attachments_.find(viewModel.get());
    if (it == attachments_.end()) return;
    viewModel->removePropertyObserver(it->second.propertyToken);
    viewModel->setSelectionDelegate(nullptr);
    viewModel->setDiffHandler({});
    viewModel->setUpdatesHandler({});
    attachments_.erase(it);
}

std::optional<size_t> FLKTimelinePanelViewModel::sectionOf(const FLKTimelineTrackViewModel* viewModel) const {
    for (size_t i = 0; i < trackViewModels_.size(); ++i) {
        if (trackViewModels_[i].get() == viewModel) return i;
    }
    return std::nullopt;
}

void FLKTimelinePanelViewModel::forwardDiff(const FLKTimelineTrackViewModel* viewModel,
                                            const FLKTimelineTrackViewModel::ClipsDiff& diff) {
    auto section = sectionOf(viewModel);
    if (!section || !diffHandler_) return;
    CellDiff cells;
    for (size_t item : diff.removed) cells.removed.push_back({*section, item});
    for (size_t item : diff.inserted) cells.inserted.push_back({*section, item});
    for (const auto& [from, to] : diff.moved) cells.moved.push_back({{*section, from}, {*section, to}});
    diffHandler_(cells);
}

void FLKTimelinePanelViewModel::forwardUpdates(const FLKTimelineTrackViewModel* viewModel,
                                               const std::vector<size_t>& items) {
    auto section = sectionOf(viewModel);
    if (!section || !updatesHandler_) return;
    std::vector<FLKIndexPath> indexPaths;
    for (size_t item : items) indexPaths.push_back({*section, item});
    updatesHandler_(indexPaths);
}

std::shared_ptr<FLKTimelineTrackViewModel> FLKTimelinePanelViewModel::trackViewModelAtIndex(size_t index) const {
    return index < trackViewModels_.size() ? trackViewModels_[index] : nullptr;
}

std::shared_ptr<FLKTimelineVideoTrackViewModel> FLKTimelinePanelViewModel::draggableTrackViewModelAtIndex(
    size_t index) const {
    return std::dynamic_pointer_cast<FLKTimelineVideoTrackViewModel>(trackViewModelAtIndex(index));
}

size_t FLKTimelinePanelViewModel::numberOfClipsInTrackAtIndex(size_t index) const {
    auto viewModel = trackViewModelAtIndex(index);
    return viewModel ? viewModel->numberOfClips() : 0;
}

std::shared_ptr<FLKTimelineClipViewModel> FLKTimelinePanelViewModel::viewModelAtIndexPath(
    const FLKIndexPath& indexPath) const {
    auto track = trackViewModelAtIndex(indexPath.section);
    return track ? track->viewModelAtIndex(indexPath.item) : nullptr;
}

std::optional<FLKIndexPath> FLKTimelinePanelViewModel::indexPathForViewModel(const FLKTimelineClipViewModel* viewModel,
                                                                             size_t trackIndex) const {
    auto track = trackViewModelAtIndex(trackIndex);
    if (!track) return std::nullopt;
    auto item = track->indexOfViewModel(viewModel);
    if (!item) return std::nullopt;
    return FLKIndexPath{trackIndex, *item};
}

std::shared_ptr<FLKTimelineVideoTrackViewModel> FLKTimelinePanelViewModel::firstVideoTrackViewModel() const {
    for (size_t i = 0; i < trackViewModels_.size(); ++i) {
        if (auto viewModel = draggableTrackViewModelAtIndex(i)) return viewModel;
    }
    return nullptr;
}

void FLKTimelinePanelViewModel::loadVideoClipWithURL(const std::filesystem::path& url) {
    if (!firstVideoTrackViewModel()) timeline_->createVideoTrack();
    if (auto viewModel = firstVideoTrackViewModel()) viewModel->loadVideoClipWithURL(url);
}

// Play head

double FLKTimelinePanelViewModel::cursorLocationForTime(double seconds) {
    return seconds * FLKTimelineClipViewModel::kPointsPerSecond;
}

void FLKTimelinePanelViewModel::updateCursorLocation(double points) {
    if (isPlaying() || isDragging()) return;
    const double t = points / FLKTimelineClipViewModel::kPointsPerSecond;
    if (!(t > 0)) return;
    timeline_->setCurrentTime(t);
    refreshPlayHead();
}

void FLKTimelinePanelViewModel::togglePlay() {
    timeline_->togglePlay();
    refreshPlayHead();
}

void FLKTimelinePanelViewModel::refreshPlayHead() {
    const double time = timeline_->currentTime();
    const bool playing = timeline_->isPlaying();
    if (time != reportedTime_) {
        reportedTime_ = time;
        didChangeProperty("currentTime");
    }
    if (playing != reportedPlaying_) {
        reportedPlaying_ = playing;
        didChangeProperty("isPlaying");
    }
}

bool FLKTimelinePanelViewModel::isDragging() const {
    if (isDragging_) return true;
    return std::any_of(trackViewModels_.begin(), trackViewModels_.end(), [](const auto& viewModel) {
        auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrackViewModel>(viewModel);
        return video && video->draggingViewModel();
    });
}

void FLKTimelinePanelViewModel::setDragging(bool dragging) {
    if (dragging == isDragging_) return;
    isDragging_ = dragging;
    didChangeProperty("isDragging");
}

// Selection

std::vector<std::shared_ptr<FLKTimelineClipViewModel>> FLKTimelinePanelViewModel::selectedClipViewModels() const {
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> selected;
    for (const auto& indexPath : selectedClipIndexes_) {
        if (auto viewModel = viewModelAtIndexPath(indexPath)) selected.push_back(viewModel);
    }
    return selected;
}

void FLKTimelinePanelViewModel::trackViewModel(FLKTimelineTrackViewModel& trackViewModel,
                                               const std::shared_ptr<FLKTimelineClipViewModel>& selectViewModel) {
    clearSelectionFlags();
    if (selectViewModel && trackViewModel.indexOfViewModel(selectViewModel.get())) selectViewModel->setSelected(true);
    refreshSelectedClipIndexes();
}

void FLKTimelinePanelViewModel::deselectAllForTrackViewModel(FLKTimelineTrackViewModel& /*trackViewModel*/) {
    clearSelectionFlags();
    refreshSelectedClipIndexes();
}

void FLKTimelinePanelViewModel::clearSelectionFlags() {
    for (const auto& track : trackViewModels_) {
        for (const auto& clip : track->clipViewModels()) clip->setSelected(false);
    }
}

// The cells carry the selection, so it follows a clip through edits that
// keep its identity; the index paths are derived from them.
void FLKTimelinePanelViewModel::refreshSelectedClipIndexes() {
    std::set<FLKIndexPath> indexes;
    for (size_t section = 0; section < trackViewModels_.size(); ++section) {
        const auto& clips = trackViewModels_[section]->clipViewModels();
        for (size_t item = 0; item < clips.size(); ++item) {
            if (clips[item]->isSelected()) indexes.insert({section, item});
        }
    }
    if (indexes == selectedClipIndexes_) return;
    selectedClipIndexes_ = std::move(indexes);
    didChangeProperty("selectedClipIndexes");
}

// Actions

void FLKTimelinePanelViewModel::beginActionWithTrack(const std::shared_ptr<FLKTimelineTrack>& track) {
    if (currentAction_ || !track) return;
    currentAction_ = FLKTimelineTrackEditingAction::actionWithTrack(track);
    didChangeProperty("currentAction");
}

void FLKTimelinePanelViewModel::endAction() {
    if (!currentAction_) return;
    auto action = std::move(currentAction_);
    action->finalize();
    pipeline_->execute(action);
    didChangeProperty("currentAction");
}

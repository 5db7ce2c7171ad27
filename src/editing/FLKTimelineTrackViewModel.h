#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "core/timeline/FLKTimelineTrack.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKPropertyObservable.h"
#include "editing/FLKTimelineClipViewModel.h"
#include "editing/FLKTimelineTrackEditingAction.h"
#include "editing/FLKTimelineTrackSelectionDelegate.h"

// One row of the timeline panel: a cell view model per clip of the track,
// kept in step with the track. A clip that keeps its identity through an edit
// keeps its view model, so selection and hover survive trims. Edits of the
// track are recorded between beginAction and endAction as one undo step.
// Main thread only.
class FLKTimelineTrackViewModel : public FLKPropertyObservable {
public:
    // Item indexes of the row's cells, old indexes for removals, new ones for
    // insertions.
    struct ClipsDiff {
        std::vector<size_t> removed;
        std::vector<size_t> inserted;
        std::vector<std::pair<size_t, size_t>> moved;  // from, to

        bool isEmpty() const { return removed.empty() && inserted.empty() && moved.empty(); }
    };
    using DiffHandler = std::function<void(const ClipsDiff& diff)>;
    // Cells whose clip changed and must be redrawn.
    using UpdatesHandler = std::function<void(const std::vector<size_t>& items)>;

    // Edits go to the shared pipeline unless another one is given.
    explicit FLKTimelineTrackViewModel(std::shared_ptr<FLKTimelineTrack> track, FLKActionPipeline* pipeline = nullptr);
    ~FLKTimelineTrackViewModel() override;
    FLKTimelineTrackViewModel(const FLKTimelineTrackViewModel&) = delete;
    FLKTimelineTrackViewModel& operator=(const FLKTimelineTrackViewModel&) = delete;

    const std::shared_ptr<FLKTimelineTrack>& track() const { return track_; }
    const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& clipViewModels() const { return clipViewModels_; }
    size_t numberOfClips() const { return clipViewModels_.size(); }
    // nullptr past the last clip.
    std::shared_ptr<FLKTimelineClipViewModel> viewModelAtIndex(size_t index) const;
    std::optional<size_t> indexOfViewModel(const FLKTimelineClipViewModel* viewModel) const;
    std::optional<size_t> indexOfClip(const std::shared_ptr<FLKTimelineClip>& clip) const;

    // The selected cells of this row, in track order.
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> selectedViewModels() const;
    // The cell under the pointer, set by the view.
    const std::shared_ptr<FLKTimelineClipViewModel>& hoveredOverViewModel() const { return hoveredOverViewModel_; }
    void setHoveredOverViewModel(std::shared_ptr<FLKTimelineClipViewModel> viewModel);

    FLKTimelineTrackSelectionDelegate* selectionDelegate() const { return selectionDelegate_; }
    void setSelectionDelegate(FLKTimelineTrackSelectionDelegate* delegate) { selectionDelegate_ = delegate; }

    void setDiffHandler(DiffHandler handler) { diffHandler_ = std::move(handler); }
    void setUpdatesHandler(UpdatesHandler handler) { updatesHandler_ = std::move(handler); }

    const std::shared_ptr<FLKTimelineTrackEditingAction>& currentAction() const { return currentAction_; }
    // Snapshots the track. Begins nest: a command run during a drag stays
    // part of the drag's step.
    void beginAction();
    // Records the action when the outermost begin is matched; nothing without
    // an open action. A track edit is always recorded, changed or not.
    void endAction();

    // Redraws the cells of the clip.
    void updateCellsForClip(const std::shared_ptr<FLKTimelineClip>& clip);

protected:
    FLKActionPipeline& pipeline() const { return *pipeline_; }

private:
    void reloadClipViewModels();
    std::shared_ptr<FLKTimelineClipViewModel> takeViewModelForClip(
        std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& unused, const std::shared_ptr<FLKTimelineClip>& clip);
    static ClipsDiff diffBetween(const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& before,
                                 const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& after);

    const std::shared_ptr<FLKTimelineTrack> track_;
    FLKActionPipeline* const pipeline_;
    uint64_t clipsObserverToken_ = 0;
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> clipViewModels_;
    std::shared_ptr<FLKTimelineClipViewModel> hoveredOverViewModel_;
    FLKTimelineTrackSelectionDelegate* selectionDelegate_ = nullptr;
    std::shared_ptr<FLKTimelineTrackEditingAction> currentAction_;
    size_t actionDepth_ = 0;
    DiffHandler diffHandler_;
    UpdatesHandler updatesHandler_;
};

#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "core/model/FLKSceneQuerying.h"
#include "core/timeline/FLKTimeline.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKIndexPath.h"
#include "editing/FLKPropertyObservable.h"
#include "editing/FLKTimelineLayoutViewModel.h"
#include "editing/FLKTimelineTrackEditingAction.h"
#include "editing/FLKTimelineTrackSelectionDelegate.h"
#include "editing/FLKTimelineTrackViewModel.h"
#include "editing/FLKTimelineVideoTrackViewModel.h"
#include "editing/FLKVideoClipLoading.h"

// The timeline panel: a row of cells per track under a play-head cursor. It
// keeps a row view model per track of the timeline, the selection of cells,
// and turns cursor positions into timeline times at 100 points a second.
// The collection view learns of inserted, removed and moved cells through
// the diff handler and of cells to redraw through the updates handler.
// Main thread only.
class FLKTimelinePanelViewModel : public FLKPropertyObservable,
                                  public FLKTimelineTrackSelectionDelegate,
                                  public FLKVideoClipLoading {
public:
    struct CellDiff {
        std::vector<FLKIndexPath> removed;  // index paths before the change
        std::vector<FLKIndexPath> inserted;
        std::vector<std::pair<FLKIndexPath, FLKIndexPath>> moved;  // from, to
    };
    using DiffHandler = std::function<void(const CellDiff& diff)>;
    using UpdatesHandler = std::function<void(const std::vector<FLKIndexPath>& indexPaths)>;
    using TrackViewModels = std::vector<std::shared_ptr<FLKTimelineTrackViewModel>>;

    // Edits go to the shared pipeline unless another one is given.
    FLKTimelinePanelViewModel(std::shared_ptr<FLKTimeline> timeline, std::shared_ptr<FLKSceneQuerying> sceneQuery,
                              FLKActionPipeline* pipeline = nullptr);
    ~FLKTimelinePanelViewModel() override;
    FLKTimelinePanelViewModel(const FLKTimelinePanelViewModel&) = delete;
    FLKTimelinePanelViewModel& operator=(const FLKTimelinePanelViewModel&) = delete;

    const std::shared_ptr<FLKTimeline>& timeline() const { return timeline_; }
    const std::shared_ptr<FLKSceneQuerying>& sceneQuery() const { return sceneQuery_; }
    const TrackViewModels& trackViewModels() const { return trackViewModels_; }
    const std::shared_ptr<FLKTimelineLayoutViewModel>& layoutViewModel() const { return layoutViewModel_; }

    double currentTime() const { return timeline_->currentTime(); }
    bool isPlaying() const { return timeline_->isPlaying(); }
    // True while the view reports a drag or a row is dragging a clip.
    bool isDragging() const;
    void setDragging(bool dragging);

    const std::set<FLKIndexPath>& selectedClipIndexes() const { return selectedClipIndexes_; }
    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> selectedClipViewModels() const;
    const std::shared_ptr<FLKTimelineTrackEditingAction>& currentAction() const { return currentAction_; }

    void setDiffHandler(DiffHandler handler) { diffHandler_ = std::move(handler); }
    void setUpdatesHandler(UpdatesHandler handler) { updatesHandler_ = std::move(handler); }

    static double cursorLocationForTime(double seconds);
    double currentCursorLocation() const { return cursorLocationForTime(currentTime()); }
    // Moves the play head where the user clicked; not while playing or
    // dragging, and not to the very start of the panel.
    void updateCursorLocation(double points);
    void togglePlay();
    // The clock moves the play head on its own queue; the view calls this at
    // each display refresh so observers hear of it on the main thread.
    void refreshPlayHead();

    void trackViewModel(FLKTimelineTrackViewModel& trackViewModel,
                        const std::shared_ptr<FLKTimelineClipViewModel>& selectViewModel) override;
    void deselectAllForTrackViewModel(FLKTimelineTrackViewModel& trackViewModel) override;

    std::shared_ptr<FLKTimelineClipViewModel> viewModelAtIndexPath(const FLKIndexPath& indexPath) const;
    std::optional<FLKIndexPath> indexPathForViewModel(const FLKTimelineClipViewModel* viewModel,
                                                      size_t trackIndex) const;
    std::shared_ptr<FLKTimelineTrackViewModel> trackViewModelAtIndex(size_t index) const;
    // The row whose clips can be dragged; nullptr for other rows.
    std::shared_ptr<FLKTimelineVideoTrackViewModel> draggableTrackViewModelAtIndex(size_t index) const;
    size_t numberOfClipsInTrackAtIndex(size_t index) const;
    double duration() const { return timeline_->duration(); }

    // A drag in the panel: one undo step of the track's edits between the two.
    void beginActionWithTrack(const std::shared_ptr<FLKTimelineTrack>& track);
    void endAction();

    // Onto the first video track, made when the timeline has none.
    void loadVideoClipWithURL(const std::filesystem::path& url) override;

private:
    struct Attachment {
        FLKPropertyObservable::ObserverToken propertyToken;
    };

    void reloadTrackViewModels();
    std::shared_ptr<FLKTimelineTrackViewModel> makeTrackViewModel(const std::shared_ptr<FLKTimelineTrack>& track);
    void attach(const std::shared_ptr<FLKTimelineTrackViewModel>& viewModel);
    void detach(const std::shared_ptr<FLKTimelineTrackViewModel>& viewModel);
    std::optional<size_t> sectionOf(const FLKTimelineTrackViewModel* viewModel) const;
    void forwardDiff(const FLKTimelineTrackViewModel* viewModel, const FLKTimelineTrackViewModel::ClipsDiff& diff);
    void forwardUpdates(const FLKTimelineTrackViewModel* viewModel, const std::vector<size_t>& items);
    void clearSelectionFlags();
    void refreshSelectedClipIndexes();
    std::shared_ptr<FLKTimelineVideoTrackViewModel> firstVideoTrackViewModel() const;

    const std::shared_ptr<FLKTimeline> timeline_;
    const std::shared_ptr<FLKSceneQuerying> sceneQuery_;
    FLKActionPipeline* const pipeline_;
    const std::shared_ptr<FLKTimelineLayoutViewModel> layoutViewModel_ = std::make_shared<FLKTimelineLayoutViewModel>();
    uint64_t tracksObserverToken_ = 0;
    TrackViewModels trackViewModels_;
    std::map<const FLKTimelineTrackViewModel*, Attachment> attachments_;
    std::set<FLKIndexPath> selectedClipIndexes_;
    std::shared_ptr<FLKTimelineTrackEditingAction> currentAction_;
    bool isDragging_ = false;
    double reportedTime_ = 0;
    bool reportedPlaying_ = false;
    DiffHandler diffHandler_;
    UpdatesHandler updatesHandler_;
};

#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/FLKSerializable.h"
#include "core/timeline/FLKPlaceholderClip.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"
#include "core/timeline/FLKVideoTransitionClip.h"
#include "editing/FLKIndexPath.h"
#include "editing/FLKTimelineTrackViewModel.h"
#include "editing/FLKVideoClipLoading.h"

// The row of the video track and the commands on its clips. Each command is
// one undo step; a drag to reorder is one step from pick-up to drop, a
// placeholder holding the gap meanwhile. Main thread only.
class FLKTimelineVideoTrackViewModel : public FLKTimelineTrackViewModel, public FLKVideoClipLoading {
public:
    // Every new transition is this effect, this long; there is no choice at insertion.
    static constexpr const char* kTransitionFunctionName = "crossZoom";
    static constexpr double kTransitionDuration = 2.0;

    // Makes the transition effect for a kernel name; nullptr when it cannot be built.
    using TransitionMaker = std::function<std::shared_ptr<FLKSerializable>(const std::string& functionName)>;

    explicit FLKTimelineVideoTrackViewModel(std::shared_ptr<FLKTimelineVideoTrack> track,
                                            FLKActionPipeline* pipeline = nullptr);

    std::shared_ptr<FLKTimelineVideoTrack> videoTrack() const;

    // Cut the clip at the play head, keeping the part after (before) it. Only
    // a video clip under the play head can be trimmed; otherwise a beep.
    void trimLeft(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel);
    void trimRight(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel);
    // Two halves at the play head, which must lie strictly inside the clip.
    void split(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel);
    void remove(const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& viewModels);
    // Appends the whole file as a clip.
    void loadVideoClipWithURL(const std::filesystem::path& url) override;

    // The two cells a new transition joins: outgoing first, then incoming.
    const std::vector<std::shared_ptr<FLKTimelineClipViewModel>>& transitionClipViewModels() const {
        return transitionClipViewModels_;
    }
    void setTransitionClipViewModels(std::vector<std::shared_ptr<FLKTimelineClipViewModel>> viewModels);
    // By default the effect is built on the shared render context.
    void setTransitionMaker(TransitionMaker maker) { transitionMaker_ = std::move(maker); }

    void addTransition();
    // Joins the two transition cells with the effect, overlapping them by the
    // transition's length. The clips must be adjacent video clips, each at
    // least that long.
    void applyTransition(const std::shared_ptr<FLKSerializable>& transition);
    // Takes the transition out and moves its incoming clip back to where it
    // was. Runs inside the caller's action.
    void removeTransition(const std::shared_ptr<FLKVideoTransitionClip>& transitionClip);
    // Video clips are removed as they are, transitions through
    // removeTransition; other clips are ignored.
    void removeClip(const std::shared_ptr<FLKTimelineClip>& clip);

    void beginDraggingForViewModel(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel);
    void moveDraggingPlaceholderToIndexPath(const FLKIndexPath& indexPath);
    void endDraggingToIndexPath(const FLKIndexPath& indexPath);
    const std::shared_ptr<FLKTimelineClipViewModel>& draggingViewModel() const { return draggingViewModel_; }
    const std::shared_ptr<FLKPlaceholderClip>& placeholderClip() const { return placeholderClip_; }

    // Menu commands on the clip under the pointer (the trims) or on the
    // selection (delete) of the given row.
    void trimLeftWithViewModel(FLKTimelineTrackViewModel& viewModel);
    void trimRightWithViewModel(FLKTimelineTrackViewModel& viewModel);
    void deleteWithViewModel(FLKTimelineTrackViewModel& viewModel);

private:
    // The clip of a cell when it is a video clip under the play head.
    std::shared_ptr<FLKVideoClip> videoClipAtPlayHead(const std::shared_ptr<FLKTimelineClipViewModel>& viewModel,
                                                      bool strictlyInside) const;
    bool canJoin(const std::shared_ptr<FLKVideoClip>& from, const std::shared_ptr<FLKVideoClip>& to) const;
    void selectAlone(FLKTimelineTrackViewModel& viewModel, const std::shared_ptr<FLKTimelineClipViewModel>& clip);

    std::vector<std::shared_ptr<FLKTimelineClipViewModel>> transitionClipViewModels_;
    TransitionMaker transitionMaker_;
    std::shared_ptr<FLKTimelineClipViewModel> draggingViewModel_;
    std::shared_ptr<FLKPlaceholderClip> placeholderClip_;
};

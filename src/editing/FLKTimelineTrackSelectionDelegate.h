#pragma once

#include <memory>

class FLKTimelineClipViewModel;
class FLKTimelineTrackViewModel;

// Who keeps the timeline panel's selection; track view models ask it to
// change the selection for their menu commands.
class FLKTimelineTrackSelectionDelegate {
public:
    virtual ~FLKTimelineTrackSelectionDelegate() = default;
    // Makes the clip the only selected one.
    virtual void trackViewModel(FLKTimelineTrackViewModel& trackViewModel,
                                const std::shared_ptr<FLKTimelineClipViewModel>& selectViewModel) = 0;
    virtual void deselectAllForTrackViewModel(FLKTimelineTrackViewModel& trackViewModel) = 0;
};

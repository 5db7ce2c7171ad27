#pragma once

#include <memory>

#include "core/platform/FLKSize.h"
#include "core/timeline/FLKTimeRange.h"
#include "core/timeline/FLKTimelineClip.h"
#include "editing/FLKPropertyObservable.h"

// One cell of the timeline panel. Its width follows the clip's length at the
// panel's scale, rounded down to whole points so cells sit on the pixel grid.
// Main thread only.
class FLKTimelineClipViewModel : public FLKPropertyObservable {
public:
    static constexpr double kPointsPerSecond = 100;
    static constexpr double kCellHeight = 80;

    // A transition clip gets a transition view model.
    static std::shared_ptr<FLKTimelineClipViewModel> viewModelWithClip(std::shared_ptr<FLKTimelineClip> clip);

    explicit FLKTimelineClipViewModel(std::shared_ptr<FLKTimelineClip> clip);

    const std::shared_ptr<FLKTimelineClip>& clip() const { return clip_; }
    // The same clip after an edit (a trim gives a new copy with the same identity).
    void setClip(std::shared_ptr<FLKTimelineClip> clip);

    // Where the cell sits, in seconds on the timeline.
    FLKTimeRange drawRange() const { return clip_->timeRange(); }
    virtual FLKSize cellSize() const;

    bool isSelected() const { return isSelected_; }
    void setSelected(bool selected);

    // Seconds to whole points. The floor is taken in single precision, as the
    // cells were always laid out: 0.29 s is 29 points, not 28.
    static double flooredPoints(double seconds);

private:
    std::shared_ptr<FLKTimelineClip> clip_;
    bool isSelected_ = false;
};

#pragma once

#include <memory>
#include <vector>

#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"
#include "editing/FLKEdgeInsets.h"
#include "editing/FLKIndexPath.h"
#include "editing/FLKPropertyObservable.h"
#include "editing/FLKTimelineTrackViewModel.h"

// Where the timeline panel's cells go: a cell's left edge and width come from
// its clip's times at 100 points a second, rounded down to whole points, so
// neighbouring cells may leave a one-point seam. Main thread only.
class FLKTimelineLayoutViewModel : public FLKPropertyObservable {
public:
    static constexpr double kMinimumContentWidth = 1080;

    using TrackViewModels = std::vector<std::shared_ptr<FLKTimelineTrackViewModel>>;

    const TrackViewModels& trackViewModels() const { return trackViewModels_; }
    void setTrackViewModels(TrackViewModels trackViewModels);
    // Points per second of timeline time.
    double scale() const { return FLKTimelineClipViewModel::kPointsPerSecond; }
    // The visible size of the panel.
    FLKSize collectionViewSize() const { return collectionViewSize_; }
    void setCollectionViewSize(FLKSize size);
    const FLKEdgeInsets& collectionViewEdgeInsets() const { return collectionViewEdgeInsets_; }
    void setCollectionViewEdgeInsets(FLKEdgeInsets insets);

    // The zero rectangle where there is no clip.
    FLKRect frameForItemAtIndexPath(const FLKIndexPath& indexPath) const;
    // At least the minimum width and the visible size; wide enough for the
    // end of the last track plus the side insets.
    FLKSize contentSize() const;

private:
    double contentEndX() const;

    TrackViewModels trackViewModels_;
    FLKSize collectionViewSize_;
    FLKEdgeInsets collectionViewEdgeInsets_;
};

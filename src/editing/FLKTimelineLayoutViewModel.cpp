#include "editing/FLKTimelineLayoutViewModel.h"

#include <algorithm>

void FLKTimelineLayoutViewModel::setTrackViewModels(TrackViewModels trackViewModels) {
    trackViewModels_ = std::move(trackViewModels);
    didChangeProperty("trackViewModels");
}

void FLKTimelineLayoutViewModel::setCollectionViewSize(FLKSize size) {
    if (size == collectionViewSize_) return;
    collectionViewSize_ = size;
    didChangeProperty("collectionViewSize");
}

void FLKTimelineLayoutViewModel::setCollectionViewEdgeInsets(FLKEdgeInsets insets) {
    if (insets == collectionViewEdgeInsets_) return;
    collectionViewEdgeInsets_ = insets;
    didChangeProperty("collectionViewEdgeInsets");
}

FLKRect FLKTimelineLayoutViewModel::frameForItemAtIndexPath(const FLKIndexPath& indexPath) const {
    if (indexPath.section >= trackViewModels_.size()) return FLKRect::zero();
    auto clip = trackViewModels_[indexPath.section]->viewModelAtIndex(indexPath.item);
    if (!clip) return FLKRect::zero();
    const double x = collectionViewEdgeInsets_.left + FLKTimelineClipViewModel::flooredPoints(clip->drawRange().start);
    return FLKRect({x, collectionViewEdgeInsets_.top}, clip->cellSize());
}

double FLKTimelineLayoutViewModel::contentEndX() const {
    double lastEnd = 0;
    if (!trackViewModels_.empty()) {
        const auto& clips = trackViewModels_.back()->clipViewModels();
        if (!clips.empty()) lastEnd = clips.back()->drawRange().end;
    }
    return FLKTimelineClipViewModel::flooredPoints(lastEnd) + collectionViewEdgeInsets_.left +
           collectionViewEdgeInsets_.right;
}

FLKSize FLKTimelineLayoutViewModel::contentSize() const {
    const double width = std::max({kMinimumContentWidth, collectionViewSize_.width, contentEndX()});
    // Every row sits at the top inset.
    const double rowsHeight =
        collectionViewEdgeInsets_.top + FLKTimelineClipViewModel::kCellHeight + collectionViewEdgeInsets_.bottom;
    return {width, std::max(collectionViewSize_.height, rowsHeight)};
}

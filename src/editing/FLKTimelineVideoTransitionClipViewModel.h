#pragma once

#include <memory>

#include "core/timeline/FLKVideoTransitionClip.h"
#include "editing/FLKTimelineClipViewModel.h"

// The cell of a transition. It overlaps its neighbours, so its width is the
// exact length and is not rounded.
class FLKTimelineVideoTransitionClipViewModel : public FLKTimelineClipViewModel {
public:
    explicit FLKTimelineVideoTransitionClipViewModel(std::shared_ptr<FLKVideoTransitionClip> clip);

    std::shared_ptr<FLKVideoTransitionClip> videoClip() const;
    FLKSize cellSize() const override;
};

#include "editing/FLKBackgroundViewModel.h"

#include "core/scene/FLKColorGradientSprite.h"
#include "editing/FLKActionPipeline.h"
#include "editing/FLKPropertyChangeAction.h"

FLKBackgroundViewModel::FLKBackgroundViewModel(std::shared_ptr<FLKColorGradientSprite> gradient)
    : gradient_(std::move(gradient)) {}

std::vector<FLKColor> FLKBackgroundViewModel::colors() const {
    return gradient_ ? gradient_->colors() : std::vector<FLKColor>{};
}

bool FLKBackgroundViewModel::beginPick(size_t index) {
    if (pickedIndex_) cancelPick();
    const auto current = colors();
    if (index >= current.size()) return false;
    pickedIndex_ = index;
    colorsBeforePick_ = current;
    return true;
}

void FLKBackgroundViewModel::previewColor(const FLKColor& color) {
    if (!pickedIndex_) return;
    auto changed = gradient_->colors();
    if (*pickedIndex_ >= changed.size()) return;
    changed[*pickedIndex_] = color;
    gradient_->setColors(std::move(changed));
}

void FLKBackgroundViewModel::commitPick() {
    if (!pickedIndex_) return;
    pickedIndex_.reset();
    std::weak_ptr<FLKColorGradientSprite> weak = gradient_;
    auto apply = [weak](const std::vector<FLKColor>& colors) {
        if (auto gradient = weak.lock()) gradient->setColors(colors);
    };
    FLKActionPipeline::sharedPipeline().execute(std::make_shared<FLKPropertyChangeAction<std::vector<FLKColor>>>(
        gradient_, apply, std::move(colorsBeforePick_), gradient_->colors()));
    colorsBeforePick_.clear();
}

void FLKBackgroundViewModel::cancelPick() {
    if (!pickedIndex_) return;
    pickedIndex_.reset();
    gradient_->setColors(std::move(colorsBeforePick_));
    colorsBeforePick_.clear();
}

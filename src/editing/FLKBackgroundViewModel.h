#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "core/platform/FLKColor.h"

class FLKColorGradientSprite;

// The scene's background gradient as the background inspector edits it: a
// corner's colour shows live while it is being picked, and each finished
// pick is one undo step. Main thread only.
class FLKBackgroundViewModel {
public:
    explicit FLKBackgroundViewModel(std::shared_ptr<FLKColorGradientSprite> gradient);

    bool hasGradient() const { return gradient_ != nullptr; }
    // Top left, top right, bottom left, bottom right; empty without a gradient.
    std::vector<FLKColor> colors() const;

    // Starts picking the colour of corner `index`; false when there is no such corner.
    bool beginPick(size_t index);
    // Shows `color` at the corner being picked.
    void previewColor(const FLKColor& color);
    // Keeps the pick as one undo step (none when the colour came back unchanged).
    void commitPick();
    // Puts the colours back as they were before the pick.
    void cancelPick();

private:
    std::shared_ptr<FLKColorGradientSprite> gradient_;
    std::optional<size_t> pickedIndex_;
    std::vector<FLKColor> colorsBeforePick_;
};

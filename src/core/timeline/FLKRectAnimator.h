#pragma once

#include "core/timeline/FLKAnimator.h"

// Animates a rectangle: origin and size move by equal steps.
class FLKRectAnimator : public FLKAnimator {
public:
    using FLKAnimator::FLKAnimator;

protected:
    void prepareKeyframes() override;

private:
    FLKRect calculateStep() const;
};

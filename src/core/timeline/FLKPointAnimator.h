#pragma once

#include "core/timeline/FLKAnimator.h"

// Animates a point in equal steps along the line to its end.
class FLKPointAnimator : public FLKAnimator {
public:
    using FLKAnimator::FLKAnimator;

protected:
    void prepareKeyframes() override;

private:
    FLKPoint calculateStep() const;
};

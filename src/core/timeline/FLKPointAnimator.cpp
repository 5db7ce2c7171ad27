#include "core/timeline/FLKPointAnimator.h"

FLKPoint FLKPointAnimator::calculateStep() const {
    unsigned steps = numSteps();
    if (steps == 0) return {};
    return (std::get<FLKPoint>(toValue()) - std::get<FLKPoint>(fromValue())) / steps;
}

void FLKPointAnimator::prepareKeyframes() {
    FLKPoint step = calculateStep();
    prepareLinearKeyframes(
        [step](const FLKKeyframeValue& value) -> FLKKeyframeValue { return std::get<FLKPoint>(value) + step; });
}

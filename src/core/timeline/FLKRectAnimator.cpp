#include "core/timeline/FLKRectAnimator.h"

FLKRect FLKRectAnimator::calculateStep() const {
    unsigned steps = numSteps();
    if (steps == 0) return FLKRect::zero();
    const auto& from = std::get<FLKRect>(fromValue());
    const auto& to = std::get<FLKRect>(toValue());
    return {(to.origin.x - from.origin.x) / steps, (to.origin.y - from.origin.y) / steps,
            (to.size.width - from.size.width) / steps, (to.size.height - from.size.height) / steps};
}

void FLKRectAnimator::prepareKeyframes() {
    FLKRect step = calculateStep();
    prepareLinearKeyframes([step](const FLKKeyframeValue& value) -> FLKKeyframeValue {
        const auto& r = std::get<FLKRect>(value);
        return FLKRect{r.origin.x + step.origin.x, r.origin.y + step.origin.y, r.size.width + step.size.width,
                       r.size.height + step.size.height};
    });
}

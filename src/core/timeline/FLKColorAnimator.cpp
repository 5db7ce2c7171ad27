#include "core/timeline/FLKColorAnimator.h"

FLKColorAnimator::Vector FLKColorAnimator::toVector(const FLKColor& color) {
    return {static_cast<float>(color.red), static_cast<float>(color.green), static_cast<float>(color.blue),
            static_cast<float>(color.alpha)};
}

FLKColor FLKColorAnimator::fromVector(const Vector& vector) { return {vector[0], vector[1], vector[2], vector[3]}; }

FLKColorAnimator::Vector FLKColorAnimator::calculateStep() const {
    Vector step{};
    unsigned steps = numSteps();
    if (steps == 0) return step;
    Vector from = toVector(std::get<FLKColor>(fromValue()));
    Vector to = toVector(std::get<FLKColor>(toValue()));
    for (size_t i = 0; i < step.size(); ++i) step[i] = (to[i] - from[i]) / static_cast<float>(steps);
    return step;
}

void FLKColorAnimator::prepareKeyframes() {
    Vector step = calculateStep();
    prepareLinearKeyframes([step](const FLKKeyframeValue& value) -> FLKKeyframeValue {
        Vector v = toVector(std::get<FLKColor>(value));
        for (size_t i = 0; i < v.size(); ++i) v[i] += step[i];
        return fromVector(v);
    });
}

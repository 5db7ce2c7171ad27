#include "core/timeline/FLKColorArrayAnimator.h"

namespace {
std::vector<std::shared_ptr<FLKColorAnimator>> elementAnimators(const FLKKeyframeValue& fromValue,
                                                                const FLKKeyframeValue& toValue,
                                                                const std::shared_ptr<FLKUpdatableTimer>& timer) {
    const auto& from = std::get<std::vector<FLKColor>>(fromValue);
    const auto& to = std::get<std::vector<FLKColor>>(toValue);
    std::vector<std::shared_ptr<FLKColorAnimator>> animators;
    for (size_t i = 0; i < from.size(); ++i) {
        FLKColor end = i < to.size() ? to[i] : from[i];
        animators.push_back(std::make_shared<FLKColorAnimator>(std::weak_ptr<void>(), std::string(), from[i], end,
                                                               FLKAnimator::Setter(), timer));
    }
    return animators;
}
}  // namespace

FLKColorArrayAnimator::FLKColorArrayAnimator(std::weak_ptr<void> object, std::string propertyKey,
                                             FLKKeyframeValue fromValue, FLKKeyframeValue toValue, Setter setter,
                                             std::shared_ptr<FLKUpdatableTimer> timer)
    : FLKAnimator(std::move(object), std::move(propertyKey), fromValue, toValue, std::move(setter), timer),
      animators_(elementAnimators(fromValue, toValue, timer)) {}

void FLKColorArrayAnimator::setDuration(double duration) {
    for (const auto& animator : animators_) animator->setDuration(duration);
    FLKAnimator::setDuration(duration);
}

void FLKColorArrayAnimator::startAnimating() {
    for (const auto& animator : animators_) animator->startAnimating();
    FLKAnimator::startAnimating();
}

void FLKColorArrayAnimator::stopAnimating() {
    for (const auto& animator : animators_) animator->stopAnimating();
    FLKAnimator::stopAnimating();
}

void FLKColorArrayAnimator::prepareKeyframes() {
    std::vector<std::vector<FLKKeyframe>> elementKeyframes;
    for (const auto& animator : animators_) elementKeyframes.push_back(animator->keyframes());
    unsigned steps = numSteps();
    std::vector<FLKKeyframe> keyframes;
    keyframes.reserve(steps);
    double time = 0;
    for (unsigned step = 0; step < steps; ++step) {
        std::vector<FLKColor> colors;
        for (const auto& element : elementKeyframes) colors.push_back(std::get<FLKColor>(element[step].value));
        keyframes.push_back(FLKKeyframe::keyframeWithValue(std::move(colors), time));
        time += frameInterval();
    }
    setKeyframes(std::move(keyframes));
}

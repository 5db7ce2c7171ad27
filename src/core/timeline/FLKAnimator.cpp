#include "core/timeline/FLKAnimator.h"

#include <cmath>

#include "core/platform/FLKClock.h"
#include "core/platform/FLKMainQueue.h"
#include "core/timeline/FLKColorAnimator.h"
#include "core/timeline/FLKColorArrayAnimator.h"
#include "core/timeline/FLKPointAnimator.h"
#include "core/timeline/FLKRectAnimator.h"

namespace {
// A tick at a keyframe's time, give or take rounding in the summed frame
// intervals, is on time for it.
constexpr double kTimeTolerance = 1e-9;

template <class Member, class Value>
std::shared_ptr<FLKAnimator> makeIfBoth(std::weak_ptr<void>& object, std::string& key, const FLKKeyframeValue& from,
                                        const FLKKeyframeValue& to, FLKAnimator::Setter& setter,
                                        std::shared_ptr<FLKUpdatableTimer>& timer) {
    if (!std::holds_alternative<Value>(to)) return nullptr;
    return std::make_shared<Member>(std::move(object), std::move(key), from, to, std::move(setter), std::move(timer));
}

unsigned framesPerSecond(const std::weak_ptr<FLKUpdatableTimer>& timer) {
    auto strongTimer = timer.lock();
    return strongTimer ? strongTimer->fps() : 0;
}
}  // namespace

std::shared_ptr<FLKAnimator> FLKAnimator::animatorWithObject(std::weak_ptr<void> object, std::string propertyKey,
                                                             FLKKeyframeValue fromValue, FLKKeyframeValue toValue,
                                                             Setter setter, std::shared_ptr<FLKUpdatableTimer> timer) {
    if (!timer) timer = FLKClock::clock();
    if (std::holds_alternative<FLKRect>(fromValue)) {
        return makeIfBoth<FLKRectAnimator, FLKRect>(object, propertyKey, fromValue, toValue, setter, timer);
    }
    if (std::holds_alternative<FLKPoint>(fromValue)) {
        return makeIfBoth<FLKPointAnimator, FLKPoint>(object, propertyKey, fromValue, toValue, setter, timer);
    }
    if (std::holds_alternative<std::vector<FLKColor>>(fromValue)) {
        return makeIfBoth<FLKColorArrayAnimator, std::vector<FLKColor>>(object, propertyKey, fromValue, toValue, setter,
                                                                       timer);
    }
    if (std::holds_alternative<FLKColor>(fromValue)) {
        return makeIfBoth<FLKColorAnimator, FLKColor>(object, propertyKey, fromValue, toValue, setter, timer);
    }
    return nullptr;
}

FLKAnimator::FLKAnimator(std::weak_ptr<void> object, std::string propertyKey, FLKKeyframeValue fromValue,
                         FLKKeyframeValue toValue, Setter setter, std::shared_ptr<FLKUpdatableTimer> timer)
    : object_(std::move(object)),
      propertyKey_(std::move(propertyKey)),
      fromValue_(std::move(fromValue)),
      toValue_(std::move(toValue)),
      setter_(std::move(setter)),
      timer_(timer ? timer : FLKClock::clock()),
      frameInterval_(framesPerSecond(timer_) > 0 ? 1.0 / framesPerSecond(timer_) : 0.0),
      currentValue_(fromValue_) {}

void FLKAnimator::setDuration(double duration) {
    {
        std::lock_guard lock(mutex_);
        duration_ = duration;
        double steps = std::trunc(framesPerSecond(timer_) * duration);
        numSteps_ = steps > 0 ? static_cast<unsigned>(steps) : 0;
    }
    prepareKeyframes();
}

void FLKAnimator::startAnimating() {
    {
        std::lock_guard lock(mutex_);
        currentStep_ = 0;
        currentValue_ = fromValue_;
        // A restarted animator plays from its beginning, not from where the clock left it.
        currentTime_ = 0;
    }
    if (auto timer = timer_.lock()) timer->addUpdatable(shared_from_this());
}

void FLKAnimator::stopAnimating() {
    finishAnimating();
    notifyCurrentValue();
}

bool FLKAnimator::update(double time) {
    bool stepsLeft;
    {
        std::lock_guard lock(mutex_);
        currentTime_ = time;
        stepsLeft = currentStep_ < numSteps_;
        if (stepsLeft) {
            applyStep(time);
            nextStep();
        }
    }
    if (!stepsLeft) finishAnimating();
    notifyCurrentValue();
    return true;
}

double FLKAnimator::currentTime() const {
    std::lock_guard lock(mutex_);
    return currentTime_;
}

FLKKeyframeValue FLKAnimator::currentValue() const {
    std::lock_guard lock(mutex_);
    return currentValue_;
}

double FLKAnimator::duration() const {
    std::lock_guard lock(mutex_);
    return duration_;
}

unsigned FLKAnimator::numSteps() const {
    std::lock_guard lock(mutex_);
    return numSteps_;
}

unsigned FLKAnimator::currentStep() const {
    std::lock_guard lock(mutex_);
    return currentStep_;
}

std::vector<FLKKeyframe> FLKAnimator::keyframes() const {
    std::lock_guard lock(mutex_);
    return keyframes_;
}

void FLKAnimator::setKeyframes(std::vector<FLKKeyframe> keyframes) {
    std::lock_guard lock(mutex_);
    keyframes_ = std::move(keyframes);
}

void FLKAnimator::prepareLinearKeyframes(const std::function<FLKKeyframeValue(const FLKKeyframeValue&)>& addStep) {
    unsigned steps = numSteps();
    std::vector<FLKKeyframe> keyframes;
    keyframes.reserve(steps);
    FLKKeyframeValue value = fromValue_;
    double time = 0;
    for (unsigned i = 0; i < steps; ++i) {
        keyframes.push_back(FLKKeyframe::keyframeWithValue(value, time));
        value = addStep(value);
        time += frameInterval_;
    }
    setKeyframes(std::move(keyframes));
}

FLKKeyframe FLKAnimator::keyframeForTime(double time) {
    FLKKeyframe keyframe = keyframes_[currentStep_];
    if (time <= keyframe.time + kTimeTolerance) return keyframe;
    while (currentStep_ < numSteps_ && currentStep_ < keyframes_.size()) {
        keyframe = keyframes_[currentStep_];
        ++currentStep_;
        if (keyframe.time + kTimeTolerance >= time) break;
    }
    return keyframe;
}

void FLKAnimator::applyStep(double time) {
    // Keyframes rebuilt shorter behind a running animation must not be read past their end.
    if (currentStep_ >= keyframes_.size()) {
        currentStep_ = numSteps_;
        return;
    }
    currentValue_ = keyframeForTime(time).value;
}

void FLKAnimator::finishAnimating() {
    {
        std::lock_guard lock(mutex_);
        currentValue_ = toValue_;
    }
    if (auto timer = timer_.lock()) timer->removeUpdateable(shared_from_this());
}

void FLKAnimator::notifyCurrentValue() {
    if (!setter_) return;
    // Posting under the lock keeps the dispatches in the order the values were made.
    std::lock_guard lock(mutex_);
    FLKMainQueue::main()->post([setter = setter_, value = currentValue_] { setter(value); });
}

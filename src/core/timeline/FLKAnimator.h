#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/platform/FLKTimeUpdatable.h"
#include "core/platform/FLKUpdatableTimer.h"
#include "core/timeline/FLKKeyframe.h"

// Moves one property of one object from `fromValue` to `toValue` in equal
// linear steps, one step per clock tick. The steps are precomputed as
// keyframes by setDuration(); a late tick skips the steps whose time has
// passed. The property is only ever set on the main queue, one dispatch per
// tick in tick order.
//
// Threads: update() runs on the clock's thread, the rest on the main thread;
// the animation state is guarded by mutex_.
class FLKAnimator : public FLKTimeUpdatable, public std::enable_shared_from_this<FLKAnimator> {
public:
    // Writes a value into the animated property; bound to a weakly held object.
    using Setter = std::function<void(const FLKKeyframeValue&)>;

    // The member for the kind of `fromValue` (rectangle, point, colour array,
    // colour, tested in that order); nullptr for any other kind, or when
    // `toValue` is of another kind. `timer` defaults to the shared display clock;
    // the animator holds it weakly, so its owner keeps it alive.
    static std::shared_ptr<FLKAnimator> animatorWithObject(std::weak_ptr<void> object, std::string propertyKey,
                                                           FLKKeyframeValue fromValue, FLKKeyframeValue toValue,
                                                           Setter setter,
                                                           std::shared_ptr<FLKUpdatableTimer> timer = nullptr);

    // Type-safe form: `setter(object, value)` receives the property's own type.
    template <class Object, class Value, class PropertySetter>
        requires std::invocable<PropertySetter&, Object&, const Value&>
    static std::shared_ptr<FLKAnimator> animatorWithObject(const std::shared_ptr<Object>& object,
                                                           std::string propertyKey, const Value& fromValue,
                                                           const Value& toValue, PropertySetter setter,
                                                           std::shared_ptr<FLKUpdatableTimer> timer = nullptr) {
        std::weak_ptr<Object> weakObject = object;
        Setter bound = [weakObject, setter = std::move(setter)](const FLKKeyframeValue& value) mutable {
            auto strongObject = weakObject.lock();
            const auto* typed = std::get_if<Value>(&value);
            if (strongObject && typed) setter(*strongObject, *typed);
        };
        return animatorWithObject(std::weak_ptr<void>(object), std::move(propertyKey), FLKKeyframeValue(fromValue),
                                  FLKKeyframeValue(toValue), std::move(bound), std::move(timer));
    }

    FLKAnimator(std::weak_ptr<void> object, std::string propertyKey, FLKKeyframeValue fromValue,
                FLKKeyframeValue toValue, Setter setter, std::shared_ptr<FLKUpdatableTimer> timer);
    FLKAnimator(const FLKAnimator&) = delete;
    FLKAnimator& operator=(const FLKAnimator&) = delete;

    // Stores the duration (seconds), sets numSteps to the whole part of
    // fps × duration and rebuilds the keyframes. Call before startAnimating().
    virtual void setDuration(double duration);
    // Shows fromValue and registers with the clock.
    virtual void startAnimating();
    // Jumps the property to toValue and leaves the clock.
    virtual void stopAnimating();

    // The tick: applies the next step or, with none left, stops. Always true.
    bool update(double time) override;
    double currentTime() const override;

    const std::weak_ptr<void>& object() const { return object_; }
    const std::string& propertyKey() const { return propertyKey_; }
    const FLKKeyframeValue& fromValue() const { return fromValue_; }
    const FLKKeyframeValue& toValue() const { return toValue_; }
    FLKKeyframeValue currentValue() const;
    double duration() const;
    unsigned numSteps() const;
    unsigned currentStep() const;
    double frameInterval() const { return frameInterval_; }
    std::vector<FLKKeyframe> keyframes() const;

protected:
    // Builds the keyframes for numSteps(); called with mutex_ not held.
    virtual void prepareKeyframes() = 0;
    void setKeyframes(std::vector<FLKKeyframe> keyframes);
    // Keyframes value, value + step, ... at times 0, frameInterval, ...
    void prepareLinearKeyframes(const std::function<FLKKeyframeValue(const FLKKeyframeValue&)>& addStep);

private:
    // These expect mutex_ held.
    FLKKeyframe keyframeForTime(double time);
    void applyStep(double time);
    void nextStep() { ++currentStep_; }
    void finishAnimating();

    void notifyCurrentValue();

    const std::weak_ptr<void> object_;
    const std::string propertyKey_;
    const FLKKeyframeValue fromValue_;
    const FLKKeyframeValue toValue_;
    const Setter setter_;
    // Weak: a clock that holds its updatables strongly would otherwise keep both alive.
    const std::weak_ptr<FLKUpdatableTimer> timer_;
    const double frameInterval_;

    mutable std::mutex mutex_;
    double duration_ = 0;                  // guarded by mutex_
    unsigned numSteps_ = 0;                // guarded by mutex_
    unsigned currentStep_ = 0;             // guarded by mutex_
    double currentTime_ = 0;               // guarded by mutex_
    FLKKeyframeValue currentValue_;        // guarded by mutex_
    std::vector<FLKKeyframe> keyframes_;   // guarded by mutex_
};

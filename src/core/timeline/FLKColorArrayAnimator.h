#pragma once

#include <memory>
#include <vector>

#include "core/timeline/FLKAnimator.h"
#include "core/timeline/FLKColorAnimator.h"

// Animates an array of colours through one colour animator per element; the
// element animators compute values only and set nothing. A from-array longer
// than the to-array keeps its extra colours until the animation ends.
class FLKColorArrayAnimator : public FLKAnimator {
public:
    FLKColorArrayAnimator(std::weak_ptr<void> object, std::string propertyKey, FLKKeyframeValue fromValue,
                          FLKKeyframeValue toValue, Setter setter, std::shared_ptr<FLKUpdatableTimer> timer);

    void setDuration(double duration) override;
    void startAnimating() override;
    void stopAnimating() override;

    const std::vector<std::shared_ptr<FLKColorAnimator>>& animators() const { return animators_; }

protected:
    void prepareKeyframes() override;

private:
    const std::vector<std::shared_ptr<FLKColorAnimator>> animators_;
};

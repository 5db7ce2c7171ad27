#pragma once

#include <array>

#include "core/timeline/FLKAnimator.h"

// Animates a colour component by component (red, green, blue, alpha) in
// single precision.
class FLKColorAnimator : public FLKAnimator {
public:
    using Vector = std::array<float, 4>;

    using FLKAnimator::FLKAnimator;

    static Vector toVector(const FLKColor& color);
    static FLKColor fromVector(const Vector& vector);

protected:
    void prepareKeyframes() override;

private:
    Vector calculateStep() const;
};

#pragma once

#include <memory>

class FLKTimeUpdatable;

// What updatables see of the clock driving them: the display clock during
// playback, a frame-by-frame clock during export.
class FLKUpdatableTimer {
public:
    virtual ~FLKUpdatableTimer() = default;

    virtual void addUpdatable(std::shared_ptr<FLKTimeUpdatable> updatable) = 0;
    // Spelled "Updateable", unlike addUpdatable; callers rely on the pair as it is.
    virtual void removeUpdateable(const std::shared_ptr<FLKTimeUpdatable>& updatable) = 0;
    virtual void removeAllUpdatables() = 0;
    virtual unsigned fps() const = 0;
};

#pragma once

// Something driven by a clock: the timeline and the animators.
class FLKTimeUpdatable {
public:
    virtual ~FLKTimeUpdatable() = default;

    // Offers the updatable `time` seconds; answers whether it took the time
    // (a timeline refuses while paused or while its tracks are not ready).
    virtual bool update(double time) = 0;
    // The time, in seconds, the updatable stands at.
    virtual double currentTime() const = 0;
};

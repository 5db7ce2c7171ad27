#pragma once

#include <memory>

class FLKProgressSignal;

// Something driven by a clock: the timeline and the animators.
class FLKTimeUpdatable {
public:
    virtual ~FLKTimeUpdatable() = default;

    // Offers the updatable `time` seconds; answers whether it took the time
    // (a timeline refuses while paused or while its tracks are not ready).
    virtual bool update(double time) = 0;
    // The time, in seconds, the updatable stands at.
    virtual double currentTime() const = 0;
    // Notified whenever a refused time may be taken now; null when the
    // updatable never refuses for long (a caller then just offers again).
    virtual std::shared_ptr<FLKProgressSignal> progressSignal() const { return nullptr; }
};

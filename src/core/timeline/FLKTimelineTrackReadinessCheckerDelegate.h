#pragma once

#include <cstdint>

class FLKTimelineTrackReadinessChecker;

// Told of every status the checker takes, on the thread that set it: the
// clock's queue for "not ready", the main thread for the others.
class FLKTimelineTrackReadinessCheckerDelegate {
public:
    virtual ~FLKTimelineTrackReadinessCheckerDelegate() = default;
    virtual void checker(FLKTimelineTrackReadinessChecker& checker, int64_t status) = 0;
};

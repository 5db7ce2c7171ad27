#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

// How far a segment's decoding may run ahead of the frames being looked up,
// for a timeline played straight through once (an export): the decoder waits
// once it holds `aheadTime` seconds past the latest lookup, and frames before
// the earliest recent frame shown may go. Readiness checks look further ahead
// than the play head, so they move the decoder on but never release frames.
// With no limit (the editor, which scrubs back and forth) the whole segment is
// decoded in one go.
//
// Threads: the decoding job waits on its queue; lookups come from the render
// thread and the clock queue; limits and interruptions from the main thread.
// mutex_ guards every field.
class FLKDecodeWindow {
public:
    static constexpr double kUnlimited = 0;

    void setAheadTime(double seconds);
    double aheadTime() const;

    // A decoding job starting at media time `start`: its ticket. Jobs holding
    // an older ticket stop waiting and give up. Lookups are kept: the play
    // head that made them has not moved back.
    uint64_t beginJob(double start);
    // Ends every job's waiting for good (a cancel, a reset, the owner going).
    void interrupt();

    // Job side: blocks until a frame after `decodedTime` may be decoded.
    // False when the job was interrupted.
    bool waitForRoom(uint64_t ticket, double decodedTime);
    // Whether a job is blocked in waitForRoom() now.
    bool isJobWaiting() const;
    // Lookup side: a frame near `mediaTime` was asked for, to be shown or
    // only to know whether it is there.
    void noteLookup(double mediaTime, bool shown);
    // The earliest recent time shown: no later lookup goes before it;
    // -infinity when any may (nothing shown yet, or no limit).
    double releasableBefore() const;

private:
    bool hasRoomLocked(double decodedTime) const;

    // Two clips of one segment in a transition, each looked up by the
    // renderer and by the readiness check.
    static constexpr size_t kRecentLookups = 4;

    mutable std::mutex mutex_;
    std::condition_variable roomChanged_;
    double aheadTime_ = kUnlimited;  // guarded by mutex_
    uint64_t ticket_ = 0;            // guarded by mutex_
    double start_ = 0;               // guarded by mutex_
    std::deque<double> lookups_;     // guarded by mutex_; latest last
    std::deque<double> shown_;       // guarded by mutex_; latest last
    int waitingJobs_ = 0;            // guarded by mutex_
};

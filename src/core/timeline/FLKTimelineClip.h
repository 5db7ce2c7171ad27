#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/platform/FLKSerializable.h"
#include "core/timeline/FLKTimeRange.h"

// A piece of a track laid on the timeline. Clips are values: every edit makes
// a new clip (moved, re-ranged, trimmed or split) rather than changing one in
// place, so a snapshot of a track's clip list stays valid. Only the display
// name may change, on the main thread.
class FLKTimelineClip : public FLKSerializable, public std::enable_shared_from_this<FLKTimelineClip> {
public:
    enum Type : int64_t { kVideo = 1, kTransition = 2, kPlaceholder = 4 };

    FLKTimelineClip(std::string identifier, std::string name, FLKTimeRange timeRange)
        : identifier_(std::move(identifier)), name_(std::move(name)), timeRange_(timeRange) {}

    const std::string& identifier() const { return identifier_; }
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    const FLKTimeRange& timeRange() const { return timeRange_; }

    virtual int64_t type() const = 0;
    virtual double duration() const = 0;
    // How far the clip pushes the clips after it.
    virtual double shiftDuration() const = 0;

    virtual std::shared_ptr<FLKTimelineClip> clipByOffsetingWithTime(double t) const = 0;
    virtual std::shared_ptr<FLKTimelineClip> clipWithTimeRange(FLKTimeRange range) const = 0;
    virtual std::shared_ptr<FLKTimelineClip> copy() const = 0;

    // Two clips with the same identity are the same clip to a track, whatever
    // their ranges.
    virtual bool isEqual(const FLKTimelineClip& other) const = 0;
    virtual size_t hash() const = 0;

private:
    const std::string identifier_;
    std::string name_;  // main thread only
    const FLKTimeRange timeRange_;
};

using FLKClip = FLKTimelineClip;

namespace flk {
inline bool sameClip(const std::shared_ptr<FLKTimelineClip>& a, const std::shared_ptr<FLKTimelineClip>& b) {
    return a && b && a->isEqual(*b);
}
}  // namespace flk

#pragma once

#include <memory>
#include <string>

#include "core/timeline/FLKTimelineClip.h"

// The span during which the end of one video clip blends into the start of
// the next. It overlaps both, so it pushes nothing after it.
class FLKVideoTransitionClip : public FLKTimelineClip {
public:
    // `transition` is the effect, kept as the serialisable object it is read
    // as; the renderer's transition classes register themselves under their
    // own class names.
    FLKVideoTransitionClip(std::string identifier, std::string fromVideoClipIdentifier,
                           std::string toVideoClipIdentifier, std::shared_ptr<FLKSerializable> transition,
                           FLKTimeRange timeRange);

    static std::shared_ptr<FLKVideoTransitionClip> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKVideoTransitionClip"; }

    int64_t type() const override { return kTransition; }
    double duration() const override { return timeRange().length(); }
    double shiftDuration() const override { return 0; }

    const std::string& fromVideoClipIdentifier() const { return fromVideoClipIdentifier_; }
    const std::string& toVideoClipIdentifier() const { return toVideoClipIdentifier_; }
    const std::shared_ptr<FLKSerializable>& transition() const { return transition_; }

    std::shared_ptr<FLKTimelineClip> clipByOffsetingWithTime(double t) const override;
    std::shared_ptr<FLKTimelineClip> clipWithTimeRange(FLKTimeRange range) const override;
    std::shared_ptr<FLKTimelineClip> copy() const override;

    // Two transitions joining the same pair of clips are the same transition.
    bool isEqual(const FLKTimelineClip& other) const override;
    size_t hash() const override;

private:
    const std::string fromVideoClipIdentifier_;
    const std::string toVideoClipIdentifier_;
    const std::shared_ptr<FLKSerializable> transition_;
};

#include "core/timeline/FLKVideoTransitionClip.h"

#include <functional>

FLK_REGISTER_SERIALIZABLE(FLKVideoTransitionClip);

FLKVideoTransitionClip::FLKVideoTransitionClip(std::string identifier, std::string fromVideoClipIdentifier,
                                               std::string toVideoClipIdentifier,
                                               std::shared_ptr<FLKSerializable> transition, FLKTimeRange timeRange)
    : FLKTimelineClip(std::move(identifier), "", timeRange),
      fromVideoClipIdentifier_(std::move(fromVideoClipIdentifier)),
      toVideoClipIdentifier_(std::move(toVideoClipIdentifier)),
      transition_(std::move(transition)) {}

std::shared_ptr<FLKVideoTransitionClip> FLKVideoTransitionClip::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    // The name is written for readers of the file but never restored.
    return std::make_shared<FLKVideoTransitionClip>(
        dictionary.value("identifier", std::string()), dictionary.value("fromVideoClipIdentifier", std::string()),
        dictionary.value("toVideoClipIdentifier", std::string()),
        flk::objectWithDictionary(dictionary.value("transition", FLKJSON())),
        FLKTimeRange::rangeWithDictionary(dictionary.value("timeRange", FLKJSON())));
}

FLKJSON FLKVideoTransitionClip::serialized() const {
    return FLKJSON{{"className", className()},
                   {"identifier", identifier()},
                   {"name", name()},
                   {"fromVideoClipIdentifier", fromVideoClipIdentifier_},
                   {"toVideoClipIdentifier", toVideoClipIdentifier_},
                   {"transition", transition_ ? transition_->serialized() : FLKJSON()},
                   {"timeRange", timeRange().serialized()}};
}

std::shared_ptr<FLKTimelineClip> FLKVideoTransitionClip::clipByOffsetingWithTime(double t) const {
    return clipWithTimeRange(timeRange().offsetBy(t));
}

std::shared_ptr<FLKTimelineClip> FLKVideoTransitionClip::clipWithTimeRange(FLKTimeRange range) const {
    return std::make_shared<FLKVideoTransitionClip>(identifier(), fromVideoClipIdentifier_, toVideoClipIdentifier_,
                                                    transition_, range);
}

std::shared_ptr<FLKTimelineClip> FLKVideoTransitionClip::copy() const {
    auto clip = clipWithTimeRange(timeRange());
    clip->setName(name());
    return clip;
}

bool FLKVideoTransitionClip::isEqual(const FLKTimelineClip& other) const {
    auto transition = dynamic_cast<const FLKVideoTransitionClip*>(&other);
    return transition && transition->fromVideoClipIdentifier_ == fromVideoClipIdentifier_ &&
           transition->toVideoClipIdentifier_ == toVideoClipIdentifier_;
}

size_t FLKVideoTransitionClip::hash() const {
    std::hash<std::string> h;
    return h(fromVideoClipIdentifier_) ^ h(toVideoClipIdentifier_);
}

#include "core/timeline/FLKTimelineTrack.h"

#include <algorithm>
#include <cmath>


FLK_REGISTER_SERIALIZABLE(FLKTimelineTrack);

namespace {
constexpr double kConsistencyTolerance = 0.0001;

// Where a clip must start to follow the clip before it.
double expectedStart(const FLKTimelineClip& previous, const FLKTimelineClip& clip) {
    if (clip.type() == FLKTimelineClip::kTransition) return previous.timeRange().end - clip.duration();
    if (previous.type() == FLKTimelineClip::kTransition) return previous.timeRange().start;
    return previous.timeRange().end;
}
}  // namespace

FLKTimelineTrack::FLKTimelineTrack(std::string identifier) : identifier_(std::move(identifier)) {}

std::shared_ptr<FLKTimelineTrack> FLKTimelineTrack::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto track = std::make_shared<FLKTimelineTrack>(dictionary.value("identifier", std::string()));
    track->setClips(flk::arrayWithSerializedArray<FLKTimelineClip>(dictionary.value("clips", FLKJSON())));
    return track;
}

FLKJSON FLKTimelineTrack::serialized() const {
    return FLKJSON{{"className", className()}, {"identifier", identifier_}, {"clips", flk::serializedArray(clips())}};
}

FLKTimelineTrack::Clips FLKTimelineTrack::clips() const {
    std::lock_guard lock(clipsMutex_);
    return clips_;
}

double FLKTimelineTrack::duration() const {
    std::lock_guard lock(clipsMutex_);
    return clips_.empty() ? 0 : clips_.back()->timeRange().end;
}

void FLKTimelineTrack::addClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    Clips clips = this->clips();
    if (!clip || indexOfClipIn(clips, clip)) return;
    clips.push_back(clip);
    commitClips(std::move(clips));
}

void FLKTimelineTrack::insertClip(const std::shared_ptr<FLKTimelineClip>& clip, size_t index) {
    Clips clips = this->clips();
    if (!clip || indexOfClipIn(clips, clip)) return;
    clips.insert(clips.begin() + static_cast<std::ptrdiff_t>(std::min(index, clips.size())), clip);
    commitClips(shiftedClips(clips, clip, clip->shiftDuration()));
}

void FLKTimelineTrack::removeClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    Clips clips = this->clips();
    auto index = indexOfClipIn(clips, clip);
    if (!index) return;
    clips = shiftedClips(clips, clip, -clips[*index]->shiftDuration());
    clips.erase(clips.begin() + static_cast<std::ptrdiff_t>(*index));
    commitClips(std::move(clips));
}

void FLKTimelineTrack::replaceClip(const std::shared_ptr<FLKTimelineClip>& oldClip,
                                   const std::shared_ptr<FLKTimelineClip>& newClip) {
    Clips clips = this->clips();
    auto index = indexOfClipIn(clips, oldClip);
    if (!index || !newClip) return;
    // The list stays free of duplicates: a clip equal to another one already
    // on the track cannot take the old clip's place.
    auto existing = indexOfClipIn(clips, newClip);
    if (existing && *existing != *index) return;
    const auto& old = clips[*index];
    const double shift = (newClip->timeRange().start - old->timeRange().start) +
                         (newClip->shiftDuration() - old->shiftDuration());
    clips[*index] = newClip;
    commitClips(shiftedClips(clips, newClip, shift));
}

void FLKTimelineTrack::setClips(const Clips& clips) {
    Clips unique;
    for (const auto& clip : clips) {
        if (clip && !indexOfClipIn(unique, clip)) unique.push_back(clip);
    }
    commitClips(std::move(unique));
}

std::optional<size_t> FLKTimelineTrack::indexOfClip(const std::shared_ptr<FLKTimelineClip>& clip) const {
    return indexOfClipIn(clips(), clip);
}

std::optional<size_t> FLKTimelineTrack::indexOfClipIn(const Clips& clips, const std::shared_ptr<FLKTimelineClip>& clip) {
    if (!clip) return std::nullopt;
    for (size_t i = 0; i < clips.size(); ++i) {
        if (clips[i]->isEqual(*clip)) return i;
    }
    return std::nullopt;
}

bool FLKTimelineTrack::intersectsAnyClip(const std::shared_ptr<FLKTimelineClip>& clip) const {
    if (!clip) return false;
    const FLKTimeRange range = clip->timeRange();
    for (const auto& other : clips()) {
        const double start = std::max(range.start, other->timeRange().start);
        const double end = std::min(range.end, other->timeRange().end);
        if (start >= 0 && start < end) return true;
    }
    return false;
}

FLKTimelineTrack::Clips FLKTimelineTrack::shiftedClips(const Clips& clips,
                                                       const std::shared_ptr<FLKTimelineClip>& afterClip, double t) {
    auto index = indexOfClipIn(clips, afterClip);
    if (!index) return clips;
    Clips shifted(clips.begin(), clips.begin() + static_cast<std::ptrdiff_t>(*index) + 1);
    for (size_t i = *index + 1; i < clips.size(); ++i) shifted.push_back(clips[i]->clipByOffsetingWithTime(t));
    return shifted;
}

uint64_t FLKTimelineTrack::addClipsObserver(ClipsObserver observer) {
    const uint64_t token = nextObserverToken_++;
    observers_.emplace(token, std::move(observer));
    return token;
}

void FLKTimelineTrack::removeClipsObserver(uint64_t token) { observers_.erase(token); }

void FLKTimelineTrack::commitClips(Clips clips) {
    consistent_.store(checkConsistency(clips));
    {
        std::lock_guard lock(clipsMutex_);
        clips_ = std::move(clips);
    }
    // A copy, so that an observer may remove itself.
    auto observers = observers_;
    for (auto& [token, observer] : observers) observer();
}

bool FLKTimelineTrack::checkConsistency(const Clips& clips) {
    for (size_t i = 1; i < clips.size(); ++i) {
        if (std::abs(clips[i]->timeRange().start - expectedStart(*clips[i - 1], *clips[i])) > kConsistencyTolerance)
            return false;
    }
    return true;
}

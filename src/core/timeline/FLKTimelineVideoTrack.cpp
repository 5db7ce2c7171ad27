#include "core/timeline/FLKTimelineVideoTrack.h"

#include <algorithm>
#include <map>
#include <cstdio>
#include <string>

#include "core/platform/FLKUniqueIdentifier.h"

FLK_REGISTER_SERIALIZABLE(FLKTimelineVideoTrack);

namespace {
std::mutex gFactoryMutex;
FLKTimelineVideoTrack::BufferManagersFactory gFactory;  // guarded by gFactoryMutex

FLKTimelineVideoTrack::BufferManagersFactory installedFactory() {
    std::lock_guard lock(gFactoryMutex);
    return gFactory;
}

template <class Format, class... Args>
std::string formatted(Format format, Args... args) {
    const int size = std::snprintf(nullptr, 0, format, args...);
    std::string text(static_cast<size_t>(std::max(size, 0)), '\0');
    std::snprintf(text.data(), text.size() + 1, format, args...);
    return text;
}
}  // namespace

void FLKTimelineVideoTrack::setBufferManagersFactory(BufferManagersFactory factory) {
    std::lock_guard lock(gFactoryMutex);
    gFactory = std::move(factory);
}

FLKTimelineVideoTrack::FLKTimelineVideoTrack(std::string identifier)
    : FLKTimelineVideoTrack(std::move(identifier), installedFactory()) {}

FLKTimelineVideoTrack::FLKTimelineVideoTrack(std::string identifier, BufferManagersFactory factory)
    : FLKTimelineTrack(std::move(identifier)),
      managersFactory_(std::move(factory)),
      managers_(managersFactory_ ? managersFactory_(*this) : BufferManagers{}) {
    setBufferWidth(kDefaultBufferWidth);
    setBufferingMarginTime(kDefaultBufferingMarginTime);
}

std::shared_ptr<FLKTimelineVideoTrack> FLKTimelineVideoTrack::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto track = std::make_shared<FLKTimelineVideoTrack>(dictionary.value("identifier", std::string()));
    track->setClips(flk::arrayWithSerializedArray<FLKTimelineClip>(dictionary.value("clips", FLKJSON())));
    return track;
}

void FLKTimelineVideoTrack::setBufferWidth(double seconds) {
    bufferWidth_.store(seconds);
    for (const auto& manager : {managers_.video, managers_.transition}) {
        if (manager) manager->setBufferWidth(seconds);
    }
}

void FLKTimelineVideoTrack::setDecodeAheadTime(double seconds) {
    // Frames already shown are let go, so a recording whose clips go back in
    // it keeps whole segments.
    if (managers_.video && showsEachRecordingForward()) managers_.video->setDecodeAheadTime(seconds);
}

void FLKTimelineVideoTrack::setProgressSignal(const std::shared_ptr<FLKProgressSignal>& signal) {
    for (const auto& manager : {managers_.video, managers_.transition}) {
        if (manager) manager->setProgressSignal(signal);
    }
}

bool FLKTimelineVideoTrack::showsEachRecordingForward() const {
    auto videoClips = this->videoClips();
    std::sort(videoClips.begin(), videoClips.end(),
              [](const auto& a, const auto& b) { return a->timeRange().start < b->timeRange().start; });
    std::map<std::filesystem::path, double> shownUpTo;
    for (const auto& clip : videoClips) {
        auto [seen, isFirst] = shownUpTo.try_emplace(clip->assetURL(), clip->clipRange().end);
        if (isFirst) continue;
        if (clip->clipRange().start + 1e-6 < seen->second) return false;
        seen->second = clip->clipRange().end;
    }
    return true;
}

void FLKTimelineVideoTrack::setBufferingMarginTime(double seconds) {
    bufferingMarginTime_.store(seconds);
    for (const auto& manager : {managers_.video, managers_.transition}) {
        if (manager) manager->setBufferingMarginTime(seconds);
    }
}

std::vector<std::shared_ptr<FLKVideoClip>> FLKTimelineVideoTrack::videoClips() const {
    std::vector<std::shared_ptr<FLKVideoClip>> result;
    for (const auto& clip : clips()) {
        if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(clip)) result.push_back(std::move(video));
    }
    return result;
}

std::vector<std::shared_ptr<FLKVideoTransitionClip>> FLKTimelineVideoTrack::transitionClips() const {
    std::vector<std::shared_ptr<FLKVideoTransitionClip>> result;
    for (const auto& clip : clips()) {
        if (auto transition = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip))
            result.push_back(std::move(transition));
    }
    return result;
}


std::shared_ptr<FLKVideoClip> FLKTimelineVideoTrack::createClipWithVideoURL(const std::filesystem::path& url) {
    auto media = FLKVideoClipMedia::mediaWithURL(url);
    const double start = duration();
    const double length = media->duration();
    auto clip = std::make_shared<FLKVideoClip>(flk::uniqueIdentifier(), std::move(media),
                                               FLKTimeRange{start, start + length}, FLKTimeRange{0, length});
    clip->setName(formatted("Video Clip - %lu (%s)", static_cast<unsigned long>(createdCounter()),
                            flk::absoluteString(url).c_str()));
    return clip;
}

void FLKTimelineVideoTrack::addClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    FLKTimelineTrack::addClip(clip);
    createBuffersForClip(clip);
    bufferIfNeededAtTime(currentTime());
}

void FLKTimelineVideoTrack::insertClip(const std::shared_ptr<FLKTimelineClip>& clip, size_t index) {
    FLKTimelineTrack::insertClip(clip, index);
    createBuffersForClip(clip);
    bufferIfNeededAtTime(currentTime());
}

void FLKTimelineVideoTrack::removeClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    FLKTimelineTrack::removeClip(clip);
    removeBuffersForClip(clip);
    bufferIfNeededAtTime(currentTime());
}

void FLKTimelineVideoTrack::replaceClip(const std::shared_ptr<FLKTimelineClip>& oldClip,
                                        const std::shared_ptr<FLKTimelineClip>& newClip) {
    FLKTimelineTrack::replaceClip(oldClip, newClip);
    removeBuffersForClip(oldClip);
    if (!flk::sameClip(oldClip, newClip)) createBuffersForClip(newClip);
    bufferIfNeededAtTime(currentTime());
}

void FLKTimelineVideoTrack::setClips(const Clips& clips) {
    const Clips before = this->clips();
    FLKTimelineTrack::setClips(clips);
    const Clips after = this->clips();
    for (const auto& clip : before) {
        if (!indexOfClipIn(after, clip)) removeBuffersForClip(clip);
    }
    for (const auto& clip : after) {
        if (!indexOfClipIn(before, clip)) createBuffersForClip(clip);
    }
    bufferIfNeededAtTime(currentTime());
}

void FLKTimelineVideoTrack::trimClipLeftFromTimelineTime(const std::shared_ptr<FLKVideoClip>& clip, double t) {
    if (clip) replaceClip(clip, clip->videoClipByTrimmingLeftFromTimelineTime(t));
}

void FLKTimelineVideoTrack::trimClipRightFromTimelineTime(const std::shared_ptr<FLKVideoClip>& clip, double t) {
    if (clip) replaceClip(clip, clip->videoClipByTrimmingRightFromTimelineTime(t));
}

void FLKTimelineVideoTrack::splitClip(const std::shared_ptr<FLKVideoClip>& clip, double t) {
    auto index = indexOfClip(clip);
    if (!index) return;
    auto [left, right] = clip->videoClipBySplittingAtTimelineTime(t);
    removeClip(clip);
    insertClip(left, *index);
    insertClip(right, *index + 1);
}

std::shared_ptr<FLKVideoTransitionClip> FLKTimelineVideoTrack::addTransition(
    const std::shared_ptr<FLKSerializable>& transition, const std::shared_ptr<FLKVideoClip>& fromClip,
    const std::shared_ptr<FLKVideoClip>& toClip, double duration) {
    if (!fromClip || !toClip) return nullptr;
    const double start = fromClip->timeRange().end - duration;
    auto movedClip = toClip->clipByOffsetingWithTime(-duration);
    auto transitionClip = std::make_shared<FLKVideoTransitionClip>(
        flk::uniqueIdentifier(), fromClip->identifier(), toClip->identifier(), transition,
        FLKTimeRange{start, start + duration});
    transitionClip->setName(formatted("Transition Clip - %lu (%s -> %s)", static_cast<unsigned long>(createdCounter()),
                                      fromClip->identifier().c_str(), toClip->identifier().c_str()));
    replaceClip(toClip, movedClip);
    auto index = indexOfClip(movedClip);
    if (!index) return nullptr;
    insertClip(transitionClip, *index);
    return transitionClip;
}

std::shared_ptr<FLKTimelineClip> FLKTimelineVideoTrack::clipAtTime(double t) const {
    const Clips clips = this->clips();
    for (const auto& clip : clips) {
        if (clip->type() == FLKTimelineClip::kTransition && clip->timeRange().containsTime(t)) return clip;
    }
    for (const auto& clip : clips) {
        if (clip->timeRange().containsTime(t)) return clip;
    }
    return nullptr;
}

std::shared_ptr<FLKTimelineClip> FLKTimelineVideoTrack::clipWithIdentifier(const std::string& identifier) const {
    for (const auto& clip : clips()) {
        if (clip->identifier() == identifier) return clip;
    }
    return nullptr;
}

uint64_t FLKTimelineVideoTrack::numberOfClipsForAsset(const std::filesystem::path& assetURL) const {
    uint64_t count = 0;
    for (const auto& clip : videoClips()) {
        if (clip->assetURL() == assetURL) ++count;
    }
    return count;
}

std::shared_ptr<FLKTimelineBufferManager> FLKTimelineVideoTrack::bufferManagerForClip(
    const std::shared_ptr<FLKTimelineClip>& clip) const {
    if (!clip) return nullptr;
    switch (clip->type()) {
        case FLKTimelineClip::kVideo: return managers_.video;
        case FLKTimelineClip::kTransition: return managers_.transition;
        default: return nullptr;
    }
}

std::shared_ptr<FLKVideoSampleReader> FLKTimelineVideoTrack::readerAtTime(
    double t, std::shared_ptr<FLKTimelineClip>* clipOut) const {
    auto clip = clipAtTime(t);
    auto manager = bufferManagerForClip(clip);
    if (!manager) return nullptr;
    *clipOut = clip;
    return manager->bufferForClip(clip, t);
}

std::shared_ptr<FLKGPUTexture> FLKTimelineVideoTrack::textureAtTime(double t) const {
    std::shared_ptr<FLKTimelineClip> clip;
    auto reader = readerAtTime(t, &clip);
    return reader ? reader->displayTextureForClip(clip, t) : nullptr;
}

bool FLKTimelineVideoTrack::hasTextureAtTime(double t) const {
    std::shared_ptr<FLKTimelineClip> clip;
    auto reader = readerAtTime(t, &clip);
    // A finished segment counts as available even where it holds no frame.
    return reader && (reader->status() == FLKVideoSampleReader::kFinished || reader->hasTextureForClip(clip, t));
}

void FLKTimelineVideoTrack::refreshTexture() {
    auto texture = textureAtTime(currentTime());
    if (!texture) return;
    std::lock_guard lock(textureMutex_);
    lastTexture_ = std::move(texture);
}

std::shared_ptr<FLKGPUTexture> FLKTimelineVideoTrack::texture() const {
    std::lock_guard lock(textureMutex_);
    return lastTexture_;
}

bool FLKTimelineVideoTrack::isReady() const {
    if (clips().empty()) return true;
    const double t = std::min(currentTime() + bufferingMarginTime() * 0.5, duration());
    if (hasTextureAtTime(t) || !expectsTextureAtTime(t)) return true;
    // Nothing else asks for frames while the timeline waits: a segment whose
    // read was cut short by a reset must be asked for again from here.
    bufferIfNeededAtTime(currentTime());
    return false;
}

bool FLKTimelineVideoTrack::expectsTextureAtTime(double t) const {
    auto clip = clipAtTime(t);
    if (auto transition = std::dynamic_pointer_cast<FLKVideoTransitionClip>(clip)) {
        if (!managers_.transition || !managers_.video) return false;
        for (const auto& identifier : {transition->fromVideoClipIdentifier(), transition->toVideoClipIdentifier()}) {
            auto joined = clipWithIdentifier(identifier);
            if (!joined || !managers_.video->bufferForClip(joined, t)) return false;
        }
        return true;
    }
    auto manager = bufferManagerForClip(clip);
    return manager && manager->bufferForClip(clip, t);
}

void FLKTimelineVideoTrack::setCurrentTime(double t) {
    FLKTimelineTrack::setCurrentTime(t);
    bufferIfNeededAtTime(t);
}

void FLKTimelineVideoTrack::createBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    if (auto manager = bufferManagerForClip(clip)) manager->createBuffersForClip(clip);
}

void FLKTimelineVideoTrack::removeBuffersForClip(const std::shared_ptr<FLKTimelineClip>& clip) {
    if (auto manager = bufferManagerForClip(clip)) manager->removeBuffersForClip(clip);
}

void FLKTimelineVideoTrack::bufferIfNeededAtTime(double t) const {
    auto clip = clipAtTime(t);
    if (!clip) return;
    if (auto manager = bufferManagerForClip(clip)) manager->startBufferingForClip(clip, t);
    const double ahead = t + bufferingMarginTime();
    auto next = clipAtTime(ahead);
    if (next && !flk::sameClip(next, clip)) {
        if (auto nextManager = bufferManagerForClip(next)) nextManager->startBufferingForClip(next, ahead);
    }
}

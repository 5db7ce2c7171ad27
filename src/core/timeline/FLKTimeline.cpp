#include "core/timeline/FLKTimeline.h"

#include <algorithm>
#include <set>

#include "core/platform/FLKClock.h"
#include "core/platform/FLKProgressSignal.h"
#include "core/platform/FLKUniqueIdentifier.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKTimelineVideoSprite.h"
#include "core/scene/FLKVideoContainer.h"

FLK_REGISTER_SERIALIZABLE(FLKTimeline);

FLKTimeline::FLKTimeline(Passkey, std::string identifier, std::weak_ptr<FLKUpdatableTimer> timer)
    : identifier_(std::move(identifier)),
      timer_(std::move(timer)),
      progressSignal_(std::make_shared<FLKProgressSignal>()),
      readinessChecker_(std::make_shared<FLKTimelineTrackReadinessChecker>()) {}

std::shared_ptr<FLKTimeline> FLKTimeline::timelineWithTimer(std::weak_ptr<FLKUpdatableTimer> timer) {
    auto timeline = std::make_shared<FLKTimeline>(Passkey{}, flk::uniqueIdentifier(), std::move(timer));
    timeline->readinessChecker_->setDelegate(timeline);
    return timeline;
}

namespace {
std::mutex gMasterMutex;
std::shared_ptr<FLKTimeline> gMaster;  // guarded by gMasterMutex
}  // namespace

std::shared_ptr<FLKTimeline> FLKTimeline::masterTimeline() {
    std::lock_guard lock(gMasterMutex);
    if (!gMaster) gMaster = timelineWithTimer(FLKClock::clock());
    return gMaster;
}

void FLKTimeline::setMasterTimeline(std::shared_ptr<FLKTimeline> timeline) {
    std::lock_guard lock(gMasterMutex);
    gMaster = std::move(timeline);
}

std::shared_ptr<FLKTimeline> FLKTimeline::newWithDictionary(const FLKJSON& dictionary) {
    if (!dictionary.is_object()) return nullptr;
    auto timeline = std::make_shared<FLKTimeline>(Passkey{}, dictionary.value("identifier", std::string()),
                                                  FLKClock::clock());
    timeline->readinessChecker_->setDelegate(timeline);
    timeline->setTracks(flk::arrayWithSerializedArray<FLKTimelineTrack>(dictionary.value("tracks", FLKJSON())));
    return timeline;
}

FLKJSON FLKTimeline::serialized() const {
    return FLKJSON{{"className", className()}, {"identifier", identifier_}, {"tracks", flk::serializedArray(tracks())}};
}

std::shared_ptr<FLKUpdatableTimer> FLKTimeline::timer() const {
    std::lock_guard lock(mutex_);
    return timer_.lock();
}

void FLKTimeline::setTimer(std::weak_ptr<FLKUpdatableTimer> timer) {
    std::lock_guard lock(mutex_);
    timer_ = std::move(timer);
}

FLKTimeline::Tracks FLKTimeline::tracks() const {
    std::lock_guard lock(mutex_);
    return tracks_;
}

namespace {
// Video tracks get managers of their own, made the way the original's were.
std::shared_ptr<FLKTimelineTrack> copyOfTrack(const FLKTimelineTrack& track) {
    FLKTimelineTrack::Clips clips;
    for (const auto& clip : track.clips()) clips.push_back(clip->copy());
    std::shared_ptr<FLKTimelineTrack> copy;
    if (auto video = dynamic_cast<const FLKTimelineVideoTrack*>(&track)) {
        copy = std::make_shared<FLKTimelineVideoTrack>(track.identifier(), video->bufferManagersFactory());
    } else {
        copy = std::make_shared<FLKTimelineTrack>(track.identifier());
        copy->setReady(track.isReady());
    }
    copy->setClips(clips);
    return copy;
}
}  // namespace

std::shared_ptr<FLKTimeline> FLKTimeline::copyWithTimer(std::weak_ptr<FLKUpdatableTimer> timer) const {
    auto copy = timelineWithTimer(std::move(timer));
    copy->setName(name());
    Tracks tracks;
    for (const auto& track : this->tracks()) tracks.push_back(copyOfTrack(*track));
    copy->setTracks(tracks);
    return copy;
}

std::string FLKTimeline::name() const {
    std::lock_guard lock(mutex_);
    return name_;
}

void FLKTimeline::setName(std::string name) {
    std::lock_guard lock(mutex_);
    name_ = std::move(name);
}

std::shared_ptr<FLKTimelineVideoTrack> FLKTimeline::createVideoTrack() {
    auto track = std::make_shared<FLKTimelineVideoTrack>(flk::uniqueIdentifier());
    addTrack(track);
    return track;
}

void FLKTimeline::addTrack(const std::shared_ptr<FLKTimelineTrack>& track) {
    if (!track) return;
    {
        std::lock_guard lock(mutex_);
        tracks_.push_back(track);
    }
    notifyTracksObservers();
}

void FLKTimeline::removeTrack(const std::shared_ptr<FLKTimelineTrack>& track) {
    {
        std::lock_guard lock(mutex_);
        std::erase(tracks_, track);
    }
    notifyTracksObservers();
}

void FLKTimeline::setTracks(const Tracks& tracks) {
    {
        std::lock_guard lock(mutex_);
        tracks_.clear();
        std::copy_if(tracks.begin(), tracks.end(), std::back_inserter(tracks_), [](const auto& t) { return t != nullptr; });
    }
    notifyTracksObservers();
}

uint64_t FLKTimeline::addTracksObserver(TracksObserver observer) {
    const uint64_t token = nextObserverToken_++;
    observers_.emplace(token, std::move(observer));
    return token;
}

void FLKTimeline::removeTracksObserver(uint64_t token) { observers_.erase(token); }

void FLKTimeline::notifyTracksObservers() {
    auto observers = observers_;
    for (auto& [token, observer] : observers) observer();
}

double FLKTimeline::duration() const {
    double longest = 0;
    for (const auto& track : tracks()) longest = std::max(longest, track->duration());
    return longest;
}

void FLKTimeline::setCurrentTime(double t) {
    moveTo(t);
    // A jump while playing: the clock counts on from here, not from where playing began.
    if (isPlaying()) {
        if (auto timer = this->timer()) timer->addUpdatable(shared_from_this());
    }
}

void FLKTimeline::moveTo(double t) {
    currentTime_.store(t);
    for (const auto& track : tracks()) track->setCurrentTime(t);
}

void FLKTimeline::play() {
    // Playing before registering: the first tick may come at once.
    isPlaying_.store(true);
    if (auto timer = this->timer()) timer->addUpdatable(shared_from_this());
}

void FLKTimeline::pause() {
    readinessChecker_->endChecking();
    pauseInternally();
}

void FLKTimeline::togglePlay() {
    isPlayingOrWaiting() ? pause() : play();
}

void FLKTimeline::pauseInternally() {
    isPlaying_.store(false);
    if (auto timer = this->timer()) timer->removeUpdateable(shared_from_this());
}

void FLKTimeline::loop() {
    setCurrentTime(0);
    play();
}

void FLKTimeline::setPlaysThrough() {
    playsThrough_.store(true);
    for (const auto& track : tracks()) {
        if (auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) video->setProgressSignal(progressSignal_);
    }
}

bool FLKTimeline::update(double time) {
    if (!isPlaying()) return false;
    if (playsThrough_.load()) {
        const auto tracks = this->tracks();
        if (!std::all_of(tracks.begin(), tracks.end(), [](const auto& track) { return track->isReady(); })) return false;
    } else if (!readinessChecker_->checkReadinessForTracks(tracks())) {
        return false;
    }
    if (time < duration()) {
        moveTo(time);
        return true;
    }
    pause();
    if (isLooping()) loop();
    return true;
}

void FLKTimeline::checker(FLKTimelineTrackReadinessChecker&, int64_t status) {
    if (status == FLKTimelineTrackReadinessChecker::kNotReady) {
        pauseInternally();
    } else if (status == FLKTimelineTrackReadinessChecker::kBecameReady) {
        play();
    }
}

void FLKTimeline::mapScene(const std::shared_ptr<FLKScene>& scene) {
    auto container = scene ? scene->childWithClass<FLKVideoContainer>() : nullptr;
    if (!container) return;
    const auto tracks = this->tracks();
    std::shared_ptr<FLKTimelineTrack> track = tracks.empty() ? createVideoTrack() : tracks.front();
    auto provider = std::dynamic_pointer_cast<FLKTextureProvider>(track);
    if (!provider) return;
    auto consumer = std::dynamic_pointer_cast<FLKTextureConsumer>(container->video());
    if (!container->video()) {
        auto sprite = std::make_shared<FLKTimelineVideoSprite>();
        container->setVideo(sprite);
        consumer = sprite;
    }
    if (consumer) consumer->setProvider(provider);
}

std::vector<std::filesystem::path> FLKTimeline::allResourceURLs() const {
    std::set<std::filesystem::path> urls;
    for (const auto& track : tracks()) {
        for (const auto& clip : track->clips()) {
            if (auto video = std::dynamic_pointer_cast<FLKVideoClip>(clip); video && clip->type() == FLKTimelineClip::kVideo)
                urls.insert(video->assetURL());
        }
    }
    return {urls.begin(), urls.end()};
}

#include "core/scene/FLKAudioTrack.h"

#include "core/platform/FLKFileSerializationContext.h"

FLK_REGISTER_SERIALIZABLE(FLKAudioTrack);

namespace {
constexpr std::string_view kFileScheme = "file://";

// Locations are stored as absolute file URLs; bare absolute paths are accepted too.
std::optional<std::filesystem::path> pathFromURLString(const std::string& string) {
    if (string.starts_with(kFileScheme)) {
        std::filesystem::path path = string.substr(kFileScheme.size());
        if (path.is_absolute()) return path;
        return std::nullopt;
    }
    std::filesystem::path path = string;
    if (path.is_absolute()) return path;
    return std::nullopt;
}

// A soundtrack copied into a document's media folder is stored by where that
// folder lay when the document was saved: a working folder that is gone once
// the document is opened again. The copy that came with the document is the
// one meant.
std::optional<std::filesystem::path> copyInDocumentBeingRead(const std::filesystem::path& stored) {
    if (!FLKFileSerializationContext::currentContext() || stored.parent_path().filename() != "media") {
        return std::nullopt;
    }
    auto copy = flk::URLWithRelativeMediaPath(flk::relativeMediaPath(stored));
    std::error_code ec;
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(copy, ec))) return std::nullopt;
    return copy;
}
}  // namespace

std::shared_ptr<FLKAudioTrack> FLKAudioTrack::audioTrackWithAudioURL(const std::filesystem::path& audioURL) {
    return std::make_shared<FLKAudioTrack>(audioURL);
}

std::shared_ptr<FLKAudioTrack> FLKAudioTrack::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKAudioTrack>(dictionary);
}

void FLKAudioTrack::initWithDictionary(const FLKJSON& dictionary) {
    FLKObject::initWithDictionary(dictionary);
    auto url = dictionary.find("audioURL");
    if (url != dictionary.end() && url->is_string()) audioURL_ = pathFromURLString(url->get<std::string>());
    if (audioURL_) {
        if (auto copy = copyInDocumentBeingRead(*audioURL_)) audioURL_ = copy;
    }
}

std::vector<std::filesystem::path> FLKAudioTrack::resourceURLs() const {
    if (!audioURL_) return {};
    return {*audioURL_};
}

FLKJSON FLKAudioTrack::serialized() const {
    auto dictionary = FLKObject::serialized();
    if (audioURL_) dictionary["audioURL"] = flk::absoluteString(*audioURL_);
    return dictionary;
}

FLKAudioTrackPlayer* FLKAudioTrack::player() {
    if (!playerOpened_ && audioURL_) {
        playerOpened_ = true;
        player_ = FLKAudioTrackPlayer::playerForURL(*audioURL_);
    }
    return player_.get();
}

void FLKAudioTrack::play() {
    if (auto* p = player(); p && !p->isPlaying()) p->play();
}

void FLKAudioTrack::pause() {
    if (auto* p = player()) p->pause();
}

float FLKAudioTrack::volume() {
    auto* p = player();
    return p ? p->volume() : 0.0f;
}

void FLKAudioTrack::setVolume(float volume) {
    if (auto* p = player()) p->setVolume(volume);
}

double FLKAudioTrack::currentTime() {
    auto* p = player();
    return p ? p->currentTime() : 0.0;
}

void FLKAudioTrack::setCurrentTime(double seconds) {
    if (auto* p = player()) p->setCurrentTime(seconds);
}

FLKObject::Ptr FLKAudioTrack::copy() const {
    auto track = std::static_pointer_cast<FLKAudioTrack>(FLKObject::copy());
    track->audioURL_ = audioURL_;
    return track;
}

bool FLKAudioTrack::isEqual(const FLKObject& other) const {
    return FLKObject::isEqual(other) && audioURL_ == static_cast<const FLKAudioTrack&>(other).audioURL_;
}

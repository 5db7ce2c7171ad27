#include "core/scene/FLKVideoContainer.h"

#include <algorithm>

#include "core/gpu/FLKTextureLoader.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKLog.h"
#include "core/scene/FLKTexturedSprite.h"

FLK_REGISTER_SERIALIZABLE(FLKVideoContainer);

std::shared_ptr<FLKVideoContainer> FLKVideoContainer::videoContainerWithFrame(const FLKRect& frame) {
    auto container = std::make_shared<FLKVideoContainer>();
    container->setPlane(FLKPlane::planeWithFrame(frame));
    return container;
}

std::shared_ptr<FLKVideoContainer> FLKVideoContainer::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKVideoContainer>(dictionary);
}

void FLKVideoContainer::initWithDictionary(const FLKJSON& dictionary) {
    FLKObject::initWithDictionary(dictionary);
    auto plane = dictionary.find("plane");
    if (plane != dictionary.end()) {
        if (auto loaded = FLKPlane::newWithDictionary(*plane)) setPlane(loaded);
    }
    auto mask = dictionary.find("videoMaskImageURL");
    if (mask != dictionary.end() && mask->is_string()) {
        if (auto url = flk::resolvedMediaPath(mask->get<std::string>())) setVideoMaskImageURL(*url);
    }
}

FLKJSON FLKVideoContainer::serialized() const {
    auto dictionary = FLKObject::serialized();
    if (plane_) dictionary["plane"] = plane_->serialized();
    if (videoMaskImageURL_) dictionary["videoMaskImageURL"] = flk::relativeMediaPath(*videoMaskImageURL_);
    return dictionary;
}

void FLKVideoContainer::setPlane(const std::shared_ptr<FLKShape>& plane) {
    plane_ = plane ? plane->copy() : nullptr;
    if (video_) video_->setShape(plane_);
}

void FLKVideoContainer::setVideo(const std::shared_ptr<FLKVideoSprite>& video) {
    if (video_) video_->removeFromParent();
    assignVideo(video);
    if (video) FLKObject::addChild(video);
}

void FLKVideoContainer::assignVideo(const std::shared_ptr<FLKVideoSprite>& video) {
    video_ = video;
    if (!video_) return;
    video_->setShape(plane_);
    video_->setMaskTexture(videoMaskTexture());
}

void FLKVideoContainer::setAudio(const std::shared_ptr<FLKAudioTrack>& audio) {
    if (audio_) audio_->removeFromParent();
    assignAudio(audio);
    if (audio) FLKObject::addChild(audio);
}

void FLKVideoContainer::assignAudio(const std::shared_ptr<FLKAudioTrack>& audio) {
    audio_ = audio;
    if (audio_) audio_->setCurrentTime(video_ ? video_->currentTime() : 0);
}

void FLKVideoContainer::addChild(const Ptr& child) {
    if (!child) return;
    if (std::find(children().begin(), children().end(), child) == children().end()) {
        if (auto video = std::dynamic_pointer_cast<FLKVideoSprite>(child)) assignVideo(video);
        if (auto audio = std::dynamic_pointer_cast<FLKAudioTrack>(child)) assignAudio(audio);
    }
    FLKObject::addChild(child);
}

void FLKVideoContainer::setVideoMaskImageURL(std::optional<std::filesystem::path> url) {
    videoMaskImageURL_ = std::move(url);
    // A mask by URL is read from its file whenever its texture is made.
    videoMaskImage_.reset();
    if (video_) video_->setMaskTexture(videoMaskTexture());
}

void FLKVideoContainer::setVideoMaskImage(std::shared_ptr<const FLKImage> image) {
    videoMaskImage_ = std::move(image);
    if (video_) video_->setMaskTexture(videoMaskTexture());
}

std::shared_ptr<FLKGPUTexture> FLKVideoContainer::videoMaskTexture() const {
    if (videoMaskImage_) return FLKTextureLoader::texture2DWithImage(*videoMaskImage_, false);
    if (!videoMaskImageURL_) return nullptr;
    FLKError error;
    auto texture = FLKTextureLoader::texture2DWithImageURL(*videoMaskImageURL_, false, &error);
    if (!texture) flk::log("Could not load mask %s: %s", videoMaskImageURL_->c_str(), error.fullMessage().c_str());
    return texture;
}

std::vector<std::filesystem::path> FLKVideoContainer::resourceURLs() const {
    if (!videoMaskImageURL_) return {};
    return {*videoMaskImageURL_};
}

void FLKVideoContainer::moveBy(FLKPoint delta) {
    if (plane_) setPlane(plane_->shapeMovedBy(delta));
}

void FLKVideoContainer::moveTo(FLKPoint point) {
    if (plane_) setPlane(plane_->shapeMovedTo(point));
}

void FLKVideoContainer::scaleBy(double factor) {
    if (plane_) setPlane(plane_->shapeScaledBy(factor));
}

void FLKVideoContainer::scaleBy(double factor, FLKPoint referencePoint) {
    if (plane_) setPlane(plane_->shapeScaledBy(factor, referencePoint));
}

FLKObject::Ptr FLKVideoContainer::copy() const {
    auto container = std::static_pointer_cast<FLKVideoContainer>(FLKObject::copy());
    container->videoMaskImageURL_ = videoMaskImageURL_;
    container->videoMaskImage_ = videoMaskImage_;
    container->setPlane(plane_);
    // The mask texture is immutable: the copy's video shares it instead of reading the file again.
    if (container->video_) container->video_->setMaskTexture(video_ ? video_->maskTexture() : nullptr);
    return container;
}

bool FLKVideoContainer::isEqual(const FLKObject& other) const {
    if (!FLKObject::isEqual(other)) return false;
    const auto& container = static_cast<const FLKVideoContainer&>(other);
    if (videoMaskImageURL_ != container.videoMaskImageURL_) return false;
    if (!plane_ || !container.plane_) return !plane_ && !container.plane_;
    return plane_->isEqual(*container.plane_);
}

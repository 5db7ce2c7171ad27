#include "core/model/FLKSceneModifier.h"

#include "core/capture/FLKDevice.h"
#include "core/scene/FLKQuad.h"

FLKSceneModifier::FLKSceneModifier(std::shared_ptr<FLKScene> scene,
                                   std::shared_ptr<FLKSceneModifierClipFactory> timelineClipFactory,
                                   std::shared_ptr<FLKSceneModifierWidgetPresenter> widgetPresenter)
    : scene_(std::move(scene)),
      timelineClipFactory_(std::move(timelineClipFactory)),
      widgetPresenter_(std::move(widgetPresenter)) {}

std::shared_ptr<FLKVideoContainer> FLKSceneModifier::videoContainer() const {
    return scene_ ? scene_->childWithClass<FLKVideoContainer>() : nullptr;
}

std::shared_ptr<FLKColorGradientSprite> FLKSceneModifier::gradientSprite() const {
    return scene_ ? scene_->childWithClass<FLKColorGradientSprite>() : nullptr;
}

std::shared_ptr<FLKCamera> FLKSceneModifier::mainCamera() const { return scene_ ? scene_->mainCamera() : nullptr; }

void FLKSceneModifier::addChild(const FLKObject::Ptr& child) {
    if (scene_) scene_->addChild(child);
}

std::shared_ptr<FLKTexturedSprite> FLKSceneModifier::loadBackgroundSpriteWithImageURL(const std::filesystem::path& url,
                                                                                     const FLKRect& frame,
                                                                                     FLKError* error) {
    // Read the picture before touching the scene, so a bad file changes nothing.
    auto sprite = FLKTexturedSprite::spriteWithResourceURL(url, error);
    if (!sprite) return nullptr;
    int64_t zOrder = removeCurrentTexturedSprite();
    sprite->setName(std::string(kBackgroundSpriteName));
    sprite->setShape(FLKQuad::quadWithFrame(frame));
    // The new background takes the old one's place in the stacking.
    sprite->setZOrder(zOrder);
    addChild(sprite);
    return sprite;
}

int64_t FLKSceneModifier::removeCurrentTexturedSprite() {
    auto sprite = scene_ ? scene_->childWithClass<FLKTexturedSprite>() : nullptr;
    if (!sprite) return FLKObject::kZOrderNotPlaced;
    sprite->removeFromParent();
    return sprite->zOrder();
}

std::shared_ptr<FLKVideoContainer> FLKSceneModifier::loadVideoWithURL(const std::filesystem::path& url) {
    if (timelineClipFactory_) timelineClipFactory_->makeClipForResourceURL(url);
    return videoContainer();
}

std::shared_ptr<FLKRealtimeVideoSprite> FLKSceneModifier::loadRealtimeSpriteForDevice(const FLKDevice& device) {
    auto sprite = FLKRealtimeVideoSprite::realtimeVideoSprite();
    sprite->setRespondsToOrientationChanges(device.canChangeOrientation());
    if (auto container = videoContainer()) container->setVideo(sprite);
    return sprite;
}

std::shared_ptr<FLKAudioTrack> FLKSceneModifier::loadAudioWithURL(const std::filesystem::path& url) {
    auto container = videoContainer();
    if (!container) return nullptr;
    auto track = FLKAudioTrack::audioTrackWithAudioURL(url);
    track->play();
    container->setAudio(track);
    return track;
}

void FLKSceneModifier::unloadAudio() {
    if (auto container = videoContainer()) container->setAudio(nullptr);
}

void FLKSceneModifier::focusCamera() {
    auto camera = mainCamera();
    auto background = gradientSprite();
    if (camera) camera->focus(background ? background->shape() : nullptr);
    updateWidget();
}

void FLKSceneModifier::setCamera(const std::shared_ptr<FLKCamera>& camera) {
    if (scene_) scene_->setMainCamera(camera);
    updateWidget();
}

void FLKSceneModifier::updateWidget() {
    if (widgetPresenter_) widgetPresenter_->updateWidget();
}

#include "app/bridge/FLKCurrentSceneModifier.h"

#include "core/model/FLKSceneLoader.h"
#include "core/model/FLKTimelineClipFactory.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"

namespace {
FLKSceneModifier currentModifier() { return FLKCurrentSceneModifier::modifierOfLoadedScene(); }
}  // namespace

FLKSceneModifier FLKCurrentSceneModifier::modifierOfLoadedScene() {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    return FLKSceneModifier(loader.currentScene(),
                            FLKTimelineClipFactory::clipFactoryWithTimeline(loader.currentTimeline()), nullptr);
}

void FLKCurrentSceneModifier::addChild(const FLKObject::Ptr& child) {
    currentModifier().addChild(child);
    if (didChange_) didChange_();
}

std::shared_ptr<FLKTexturedSprite> FLKCurrentSceneModifier::loadBackgroundSpriteWithImageURL(
    const std::filesystem::path& url, const FLKRect& frame, FLKError* error) {
    auto sprite = currentModifier().loadBackgroundSpriteWithImageURL(url, frame, error);
    if (sprite && didChange_) didChange_();
    return sprite;
}

std::shared_ptr<FLKVideoContainer> FLKCurrentSceneModifier::loadVideoWithURL(const std::filesystem::path& url) {
    unloadRealtimeSprite();
    auto container = currentModifier().loadVideoWithURL(url);
    if (didChange_) didChange_();
    return container;
}

std::shared_ptr<FLKAudioTrack> FLKCurrentSceneModifier::loadAudioWithURL(const std::filesystem::path& url) {
    auto track = currentModifier().loadAudioWithURL(url);
    if (track && didChange_) didChange_();
    return track;
}

void FLKCurrentSceneModifier::unloadAudio() {
    auto container = currentModifier().videoContainer();
    if (!container || !container->audio()) return;
    container->setAudio(nullptr);
    if (didChange_) didChange_();
}

std::shared_ptr<FLKRealtimeVideoSprite> FLKCurrentSceneModifier::loadRealtimeSpriteForDevice(const FLKDevice& device) {
    // A live picture is not part of the document: nothing to save.
    return currentModifier().loadRealtimeSpriteForDevice(device);
}

void FLKCurrentSceneModifier::focusCamera() { currentModifier().focusCamera(); }

void FLKCurrentSceneModifier::setCamera(const std::shared_ptr<FLKCamera>& camera) {
    currentModifier().setCamera(camera);
}

void FLKCurrentSceneModifier::unloadRealtimeSprite() {
    auto& loader = FLKSceneLoader::defaultSceneLoader();
    auto container = currentModifier().videoContainer();
    if (!container || !std::dynamic_pointer_cast<FLKRealtimeVideoSprite>(container->video())) return;
    container->setVideo(nullptr);
    // An empty screen gets the timeline's sprite back, fed by its first track.
    if (loader.currentTimeline()) loader.currentTimeline()->mapScene(loader.currentScene());
}

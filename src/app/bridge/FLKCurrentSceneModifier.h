#pragma once

#include <functional>

#include "core/model/FLKSceneModifier.h"

// The scene modifier of whatever scene is loaded when it is asked, so a view
// model that outlives scene loads always changes the one on the canvas. Tells
// `didChange` after each change the document keeps. Main thread only.
class FLKCurrentSceneModifier : public FLKSceneModifying {
public:
    explicit FLKCurrentSceneModifier(std::function<void()> didChange) : didChange_(std::move(didChange)) {}

    // A modifier of the scene loaded now, its new clips going to the loaded timeline.
    static FLKSceneModifier modifierOfLoadedScene();

    void addChild(const FLKObject::Ptr& child) override;
    std::shared_ptr<FLKTexturedSprite> loadBackgroundSpriteWithImageURL(const std::filesystem::path& url,
                                                                       const FLKRect& frame,
                                                                       FLKError* error = nullptr) override;
    // Also gives the screen back to the timeline when a live picture had it.
    std::shared_ptr<FLKVideoContainer> loadVideoWithURL(const std::filesystem::path& url) override;
    std::shared_ptr<FLKAudioTrack> loadAudioWithURL(const std::filesystem::path& url) override;
    void unloadAudio() override;
    std::shared_ptr<FLKRealtimeVideoSprite> loadRealtimeSpriteForDevice(const FLKDevice& device) override;
    void focusCamera() override;
    void setCamera(const std::shared_ptr<FLKCamera>& camera) override;

    // The screen shows the timeline's video again instead of a live picture
    // that no recorder feeds any more.
    void unloadRealtimeSprite();

private:
    std::function<void()> didChange_;
};

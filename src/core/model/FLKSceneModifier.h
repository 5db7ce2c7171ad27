#pragma once

#include <cstdint>
#include <memory>

#include "core/model/FLKSceneModifierClipFactory.h"
#include "core/model/FLKSceneModifierWidgetPresenter.h"
#include "core/model/FLKSceneModifying.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKScene.h"

// Changes a scene on the editor's behalf; keeps the scene alive for as long
// as the editor holds it. The clip factory and the widget presenter may be
// null: their steps are then skipped. Main thread only.
class FLKSceneModifier : public FLKSceneModifying {
public:
    FLKSceneModifier(std::shared_ptr<FLKScene> scene, std::shared_ptr<FLKSceneModifierClipFactory> timelineClipFactory,
                     std::shared_ptr<FLKSceneModifierWidgetPresenter> widgetPresenter);

    const std::shared_ptr<FLKScene>& scene() const { return scene_; }
    const std::shared_ptr<FLKSceneModifierClipFactory>& timelineClipFactory() const { return timelineClipFactory_; }
    const std::shared_ptr<FLKSceneModifierWidgetPresenter>& widgetPresenter() const { return widgetPresenter_; }

    std::shared_ptr<FLKVideoContainer> videoContainer() const;
    std::shared_ptr<FLKColorGradientSprite> gradientSprite() const;
    std::shared_ptr<FLKCamera> mainCamera() const;

    void addChild(const FLKObject::Ptr& child) override;
    // The scene is left as it was when the picture cannot be read.
    std::shared_ptr<FLKTexturedSprite> loadBackgroundSpriteWithImageURL(const std::filesystem::path& url,
                                                                       const FLKRect& frame,
                                                                       FLKError* error = nullptr) override;
    // Takes the plain picture sprite (not a video or other subclass) out of
    // the scene; answers its zOrder, or the not-yet-placed zOrder when none.
    int64_t removeCurrentTexturedSprite();
    std::shared_ptr<FLKVideoContainer> loadVideoWithURL(const std::filesystem::path& url) override;
    std::shared_ptr<FLKRealtimeVideoSprite> loadRealtimeSpriteForDevice(const FLKDevice& device) override;
    // Null when the scene has no video container to carry the sound.
    std::shared_ptr<FLKAudioTrack> loadAudioWithURL(const std::filesystem::path& url) override;
    void unloadAudio() override;
    void focusCamera() override;
    void setCamera(const std::shared_ptr<FLKCamera>& camera) override;

    static constexpr const char* kBackgroundSpriteName = "background_sprite";

private:
    void updateWidget();

    const std::shared_ptr<FLKScene> scene_;
    const std::shared_ptr<FLKSceneModifierClipFactory> timelineClipFactory_;
    const std::shared_ptr<FLKSceneModifierWidgetPresenter> widgetPresenter_;
};

#pragma once

#include <filesystem>
#include <memory>

#include "core/platform/FLKRect.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKRealtimeVideoSprite.h"
#include "core/scene/FLKTexturedSprite.h"
#include "core/scene/FLKVideoContainer.h"

class FLKDevice;

// The changes the editor may make to a scene.
class FLKSceneModifying {
public:
    virtual ~FLKSceneModifying() = default;
    virtual void addChild(const FLKObject::Ptr& child) = 0;
    // Replaces the background picture, keeping its place in the stacking.
    // Null (and `error` set) when the picture cannot be read.
    virtual std::shared_ptr<FLKTexturedSprite> loadBackgroundSpriteWithImageURL(const std::filesystem::path& url,
                                                                               const FLKRect& frame,
                                                                               FLKError* error = nullptr) = 0;
    // Hands the video to the timeline, which feeds the container's video sprite.
    virtual std::shared_ptr<FLKVideoContainer> loadVideoWithURL(const std::filesystem::path& url) = 0;
    // A playing track for the file, attached to the video container.
    virtual std::shared_ptr<FLKAudioTrack> loadAudioWithURL(const std::filesystem::path& url) = 0;
    virtual void unloadAudio() = 0;
    // A live sprite for the device, made the container's video; the caller connects it to a recorder.
    virtual std::shared_ptr<FLKRealtimeVideoSprite> loadRealtimeSpriteForDevice(const FLKDevice& device) = 0;
    // Frames the camera on the background.
    virtual void focusCamera() = 0;
    virtual void setCamera(const std::shared_ptr<FLKCamera>& camera) = 0;
};

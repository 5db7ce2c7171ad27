#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "core/gpu/FLKGPUTexture.h"
#include "core/platform/FLKImage.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKInteractable.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKShapeEditable.h"
#include "core/scene/FLKTransformable.h"
#include "core/scene/FLKVideoSprite.h"

// The device screen of a template: its plane receives the recorded video
// (a child video sprite) and the recording's audio track, and an optional
// mask picture that the video is drawn through.
class FLKVideoContainer : public FLKObject, public FLKTransformable, public FLKShapeEditable, public FLKInteractable {
public:
    FLKVideoContainer() = default;
    static std::shared_ptr<FLKVideoContainer> videoContainerWithFrame(const FLKRect& frame);

    static std::shared_ptr<FLKVideoContainer> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKVideoContainer"; }

    std::shared_ptr<FLKPlane> plane() const { return plane_; }
    // Keeps a copy and hands it to the video.
    void setPlane(const std::shared_ptr<FLKShape>& plane);
    std::shared_ptr<FLKShape> shape() const override { return plane_; }
    void setShape(const std::shared_ptr<FLKShape>& shape) override { setPlane(shape); }

    const std::shared_ptr<FLKVideoSprite>& video() const { return video_; }
    // Replaces the video in the tree as well.
    void setVideo(const std::shared_ptr<FLKVideoSprite>& video);
    // Links a video without touching the tree: plane and mask go to it.
    void assignVideo(const std::shared_ptr<FLKVideoSprite>& video);
    const std::shared_ptr<FLKAudioTrack>& audio() const { return audio_; }
    void setAudio(const std::shared_ptr<FLKAudioTrack>& audio);
    void assignAudio(const std::shared_ptr<FLKAudioTrack>& audio);
    // Video sprites and audio tracks added as children are linked as well.
    void addChild(const Ptr& child) override;

    const std::optional<std::filesystem::path>& videoMaskImageURL() const { return videoMaskImageURL_; }
    void setVideoMaskImageURL(std::optional<std::filesystem::path> url);
    const std::shared_ptr<const FLKImage>& videoMaskImage() const { return videoMaskImage_; }
    void setVideoMaskImage(std::shared_ptr<const FLKImage> image);
    // A new texture of the mask each time; null without a mask.
    std::shared_ptr<FLKGPUTexture> videoMaskTexture() const;
    std::vector<std::filesystem::path> resourceURLs() const override;

    void moveBy(FLKPoint delta) override;
    void moveTo(FLKPoint point) override;
    void scaleBy(double factor) override;
    void scaleBy(double factor, FLKPoint referencePoint) override;
    bool hitTest(FLKPoint point) const override { return plane_ && plane_->containsPoint(point); }
    bool isInteractable() const override { return true; }

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKVideoContainer>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;

private:
    // All main thread only.
    std::shared_ptr<FLKPlane> plane_;
    std::shared_ptr<FLKVideoSprite> video_;
    std::shared_ptr<FLKAudioTrack> audio_;
    std::optional<std::filesystem::path> videoMaskImageURL_;
    // A mask given as pixels; a mask given by URL is read when its texture is made.
    std::shared_ptr<const FLKImage> videoMaskImage_;
};

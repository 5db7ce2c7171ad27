#pragma once

#include <memory>

#include "core/model/FLKSceneQuerying.h"
#include "core/scene/FLKScene.h"

// Reads a scene without keeping it alive: a closed document's scene goes away
// even while a query of it is still held.
class FLKSceneQuery : public FLKSceneQuerying {
public:
    explicit FLKSceneQuery(const std::shared_ptr<FLKScene>& scene) : scene_(scene) {}

    std::shared_ptr<FLKScene> scene() const { return scene_.lock(); }

    std::shared_ptr<FLKVideoContainer> videoContainer() const override;
    std::shared_ptr<FLKColorGradientSprite> gradientSprite() const override;
    std::shared_ptr<FLKCamera> mainCamera() const override;
    std::vector<FLKObject::Ptr> recursiveAllChildren() const override;
    // Zero once the scene is gone.
    FLKRect bounds() const override;

private:
    std::weak_ptr<FLKScene> scene_;  // main thread only
};

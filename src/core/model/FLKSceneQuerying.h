#pragma once

#include <memory>
#include <vector>

#include "core/scene/FLKBounding.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKVideoContainer.h"

// What the editor may read of a scene: its fixed landmarks and its nodes.
class FLKSceneQuerying : public FLKBounding {
public:
    ~FLKSceneQuerying() override = default;
    // The one container of exactly that class (the highest if several); null if none.
    virtual std::shared_ptr<FLKVideoContainer> videoContainer() const = 0;
    // The background gradient, found like the container.
    virtual std::shared_ptr<FLKColorGradientSprite> gradientSprite() const = 0;
    virtual std::shared_ptr<FLKCamera> mainCamera() const = 0;
    // Every node below the scene, ascending zOrder.
    virtual std::vector<FLKObject::Ptr> recursiveAllChildren() const = 0;
};

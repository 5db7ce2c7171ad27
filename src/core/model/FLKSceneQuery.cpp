#include "core/model/FLKSceneQuery.h"

#include "core/model/FLKSceneBounds.h"

std::shared_ptr<FLKVideoContainer> FLKSceneQuery::videoContainer() const {
    auto scene = scene_.lock();
    return scene ? scene->childWithClass<FLKVideoContainer>() : nullptr;
}

std::shared_ptr<FLKColorGradientSprite> FLKSceneQuery::gradientSprite() const {
    auto scene = scene_.lock();
    return scene ? scene->childWithClass<FLKColorGradientSprite>() : nullptr;
}

std::shared_ptr<FLKCamera> FLKSceneQuery::mainCamera() const {
    auto scene = scene_.lock();
    return scene ? scene->mainCamera() : nullptr;
}

std::vector<FLKObject::Ptr> FLKSceneQuery::recursiveAllChildren() const {
    auto scene = scene_.lock();
    return scene ? scene->recursiveAllChildren() : std::vector<FLKObject::Ptr>{};
}

FLKRect FLKSceneQuery::bounds() const { return FLKSceneBounds(scene_.lock()).bounds(); }

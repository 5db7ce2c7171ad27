#include "core/scene/FLKScene.h"

#include <mutex>

#include "core/scene/FLKVideoContainer.h"

FLK_REGISTER_SERIALIZABLE(FLKScene);

namespace {
struct CurrentSceneProvider {
    std::mutex mutex;
    std::function<std::shared_ptr<FLKScene>()> provider;  // guarded by mutex
};

CurrentSceneProvider& currentSceneProvider() {
    static CurrentSceneProvider instance;
    return instance;
}
}  // namespace

std::shared_ptr<FLKScene> FLKScene::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKScene>(dictionary);
}

void FLKScene::initWithDictionary(const FLKJSON& dictionary) {
    FLKObject::initWithDictionary(dictionary);
    auto camera = dictionary.find("mainCamera");
    if (camera != dictionary.end()) mainCamera_ = flk::objectWithDictionary<FLKCamera>(*camera);
}

FLKJSON FLKScene::serialized() const {
    auto dictionary = FLKObject::serialized();
    if (mainCamera_) dictionary["mainCamera"] = mainCamera_->serialized();
    return dictionary;
}

std::shared_ptr<FLKScene> FLKScene::templatedScene() const {
    auto scene = std::static_pointer_cast<FLKScene>(copy());
    if (auto container = scene->childWithClass<FLKVideoContainer>()) {
        container->setVideo(nullptr);
        container->setAudio(nullptr);
    }
    return scene;
}

std::shared_ptr<FLKScene> FLKScene::currentScene() {
    auto& current = currentSceneProvider();
    std::function<std::shared_ptr<FLKScene>()> provider;
    {
        std::lock_guard lock(current.mutex);
        provider = current.provider;
    }
    return provider ? provider() : nullptr;
}

void FLKScene::setCurrentSceneProvider(std::function<std::shared_ptr<FLKScene>()> provider) {
    auto& current = currentSceneProvider();
    std::lock_guard lock(current.mutex);
    current.provider = std::move(provider);
}

FLKObject::Ptr FLKScene::copy() const {
    auto scene = std::static_pointer_cast<FLKScene>(FLKObject::copy());
    scene->mainCamera_ = mainCamera_;
    return scene;
}

bool FLKScene::isEqual(const FLKObject& other) const {
    if (!FLKObject::isEqual(other)) return false;
    const auto& otherCamera = static_cast<const FLKScene&>(other).mainCamera_;
    if (!mainCamera_ || !otherCamera) return !mainCamera_ && !otherCamera;
    return mainCamera_->isEqual(*otherCamera);
}

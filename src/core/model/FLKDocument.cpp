#include "core/model/FLKDocument.h"

#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"

FLK_REGISTER_SERIALIZABLE(FLKDocument);

std::shared_ptr<FLKDocument> FLKDocument::newWithDictionary(const FLKJSON&) {
    return std::make_shared<FLKDocument>();
}

FLKJSON FLKDocument::serialized() const {
    auto scene = currentScene();
    auto timeline = currentTimeline();
    FLKJSON scenes = FLKJSON::array();
    if (scene && scene->identifier()) scenes.push_back("scenes/" + *scene->identifier());
    FLKJSON timelines = FLKJSON::array();
    if (timeline) timelines.push_back("timelines/" + timeline->identifier());
    return FLKJSON{{"className", className()}, {"scenes", scenes}, {"timelines", timelines}};
}

std::shared_ptr<FLKScene> FLKDocument::currentScene() const {
    std::lock_guard lock(mutex_);
    return currentScene_;
}

void FLKDocument::setCurrentScene(std::shared_ptr<FLKScene> scene) {
    std::lock_guard lock(mutex_);
    currentScene_ = std::move(scene);
}

std::shared_ptr<FLKTimeline> FLKDocument::currentTimeline() const {
    std::lock_guard lock(mutex_);
    return currentTimeline_;
}

void FLKDocument::setCurrentTimeline(std::shared_ptr<FLKTimeline> timeline) {
    std::lock_guard lock(mutex_);
    currentTimeline_ = std::move(timeline);
}

namespace {
template <class T>
bool bothNullOrEqual(const std::shared_ptr<T>& a, const std::shared_ptr<T>& b) {
    if (!a || !b) return !a && !b;
    return a->isEqual(*b);
}
}  // namespace

bool FLKDocument::isEqual(const FLKDocument& other) const {
    if (className() != other.className()) return false;
    return bothNullOrEqual(currentScene(), other.currentScene()) &&
           bothNullOrEqual(currentTimeline(), other.currentTimeline());
}

size_t FLKDocument::hash() const {
    auto scene = currentScene();
    auto timeline = currentTimeline();
    return (scene ? scene->hash() : 0) + (timeline ? timeline->hash() : 0);
}

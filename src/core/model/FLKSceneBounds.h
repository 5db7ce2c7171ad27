#pragma once

#include <memory>

#include "core/scene/FLKBounding.h"
#include "core/scene/FLKScene.h"

// The rectangle holding every node of a scene that has bounds.
class FLKSceneBounds : public FLKBounding {
public:
    FLKSceneBounds() = default;
    explicit FLKSceneBounds(const std::shared_ptr<FLKScene>& scene) : scene_(scene) {}

    std::shared_ptr<FLKScene> scene() const { return scene_.lock(); }
    void setScene(const std::shared_ptr<FLKScene>& scene) { scene_ = scene; }

    // Zero without a scene; null when no node has bounds.
    FLKRect bounds() const override;

private:
    std::weak_ptr<FLKScene> scene_;  // main thread only
};

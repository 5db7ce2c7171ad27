#pragma once

#include <functional>
#include <memory>

#include "core/platform/FLKUserDefaults.h"
#include "core/scene/FLKScene.h"

// The user's sound on/off choice: kept in the user defaults and applied to
// every audio track of the current scene by turning its volume full up or
// down (players keep running, so a silenced track keeps its position).
// Main thread only.
class FLKSceneSoundController {
public:
    static FLKSceneSoundController& sharedController();

    // The standard defaults, taken on first use.
    FLKUserDefaults& userDefaults() const;
    // The scene class's current scene.
    std::shared_ptr<FLKScene> scene() const { return FLKScene::currentScene(); }

    bool soundOn() const;
    void setSoundOn(bool on);

private:
    FLKSceneSoundController() = default;
};

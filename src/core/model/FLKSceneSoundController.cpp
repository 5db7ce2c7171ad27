#include "core/model/FLKSceneSoundController.h"

#include "core/platform/FLKUserDefaultsKeys.h"
#include "core/scene/FLKAudioTrack.h"

FLKSceneSoundController& FLKSceneSoundController::sharedController() {
    static FLKSceneSoundController controller;
    return controller;
}

FLKUserDefaults& FLKSceneSoundController::userDefaults() const { return FLKUserDefaults::standardUserDefaults(); }

bool FLKSceneSoundController::soundOn() const { return flk::isSoundOn(userDefaults()); }

void FLKSceneSoundController::setSoundOn(bool on) {
    flk::setSoundOn(on, userDefaults());
    auto current = scene();
    if (!current) return;
    for (auto& track : current->childrenWithClass<FLKAudioTrack>()) track->setVolume(on ? 1.0f : 0.0f);
}

#include "core/platform/FLKUserDefaultsKeys.h"

#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/platform/FLKResources.h"

namespace flk {

bool loadDefaults(FLKUserDefaults& defaults, FLKError* error) {
    FLKError failure;
    auto registered = FLKResources::propertyListNamed(kFLKDefaultsResourceName, &failure);
    if (!registered || !registered->is_object()) {
        if (registered) failure = fileSystemErrorWithMessage("The resource FLKDefaults.json is not a JSON object.");
        flk::log("Could not load the registered defaults: %s", failure.fullMessage().c_str());
        flk::setError(error, failure);
        return false;
    }
    defaults.registerDefaults(*registered);
    return true;
}

namespace {
void setAndSynchronize(FLKUserDefaults& defaults, const char* key, bool value) {
    defaults.setBool(key, value);
    FLKError error;
    if (!defaults.synchronize(&error)) flk::log("Could not save the user defaults: %s", error.fullMessage().c_str());
}
}  // namespace

bool shouldShowWelcomeScreen(const FLKUserDefaults& defaults) { return defaults.boolForKey(kFLKShouldShowWelcomeKey); }

void setShouldShowWelcomeScreen(bool show, FLKUserDefaults& defaults) {
    setAndSynchronize(defaults, kFLKShouldShowWelcomeKey, show);
}

bool isSoundOn(const FLKUserDefaults& defaults) { return defaults.boolForKey(kFLKIsSoundOnKey); }

void setSoundOn(bool on, FLKUserDefaults& defaults) {
    setAndSynchronize(defaults, kFLKIsSoundOnKey, on);
}

int64_t numberOfLaunches(const FLKUserDefaults& defaults) { return defaults.integerForKey(kFLKAppLaunchCountKey); }

void incrementLaunchCount(FLKUserDefaults& defaults) {
    defaults.setInteger(kFLKAppLaunchCountKey, numberOfLaunches(defaults) + 1);
}

bool isFirstLaunch(const FLKUserDefaults& defaults) { return numberOfLaunches(defaults) == 1; }

}  // namespace flk

#pragma once

#include <cstdint>

#include "core/platform/FLKError.h"
#include "core/platform/FLKUserDefaults.h"

inline constexpr const char* kFLKShouldShowWelcomeKey = "FLKShouldShowWelcome";
inline constexpr const char* kFLKIsSoundOnKey = "FLKIsSoundOn";
inline constexpr const char* kFLKAppLaunchCountKey = "FLKAppLaunchCount";
// The resource holding the registered defaults ("FLKDefaults.json").
inline constexpr const char* kFLKDefaultsResourceName = "FLKDefaults";

// The application's own settings over a user-defaults instance (the standard
// one unless given).
namespace flk {

// Registers the "FLKDefaults" resource as the registered defaults. False with
// the error set when the resource is missing or unreadable.
bool loadDefaults(FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults(), FLKError* error = nullptr);

bool shouldShowWelcomeScreen(const FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());
// Writes the file at once.
void setShouldShowWelcomeScreen(bool show, FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());

bool isSoundOn(const FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());
// Writes the file at once.
void setSoundOn(bool on, FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());

int64_t numberOfLaunches(const FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());
// Counts one launch; written at the next synchronise.
void incrementLaunchCount(FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());
// True exactly when one launch has been counted: ask after counting this one.
bool isFirstLaunch(const FLKUserDefaults& defaults = FLKUserDefaults::standardUserDefaults());

}  // namespace flk

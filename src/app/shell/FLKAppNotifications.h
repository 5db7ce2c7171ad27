#pragma once

// Posted by the main window (object: none) just before the render loop
// pauses; the doubled word is part of the name other parts observe.
inline constexpr const char* FLKAppWillWillPauseNotification = "FLKAppWillWillPauseNotification";
// Posted (object: none) once the render loop has resumed.
inline constexpr const char* FLKAppDidUnPauseNotification = "FLKAppDidUnPauseNotification";
// Posted (object: the main window) when File, New is about to replace the scene.
inline constexpr const char* FLKAppWillStartNewSceneNotification = "FLKAppWillStartNewSceneNotification";

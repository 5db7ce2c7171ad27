#pragma once

namespace flk {
// Connects the layers that cannot name each other: buffer managers for every
// video track, the file-backed video provider for URL video sprites, and the
// audio player behind audio tracks. Programs call it once at start-up; later
// calls do nothing.
void installCoreServices();
// Before a program returns from main(): lets go of what the main queue still
// holds (exports, timelines and their readers) and joins the threads that
// their owners released on themselves, so that none of our threads runs
// while static objects are destroyed.
void shutdownCoreServices();
}  // namespace flk

#pragma once

namespace flk {
// Connects the layers that cannot name each other: buffer managers for every
// video track, the file-backed video provider for URL video sprites, and the
// audio player behind audio tracks. Programs call it once at start-up; later
// calls do nothing.
void installCoreServices();
}  // namespace flk

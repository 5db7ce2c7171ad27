#include "core/model/FLKCoreServices.h"

#include <mutex>

#include "core/model/FLKAudioTrackMediaPlayer.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKThreadReaper.h"
#include "core/timeline/FLKTimelineVideoBufferManager.h"
#include "core/timeline/FLKURLVideoTextureProviderAdapter.h"

namespace flk {
void installCoreServices() {
    static std::once_flag once;
    std::call_once(once, [] {
        FLKTimelineVideoBufferManager::installAsTrackBufferManagers();
        FLKURLVideoTextureProviderAdapter::installAsVideoFileTextureProvider();
        FLKAudioTrackMediaPlayer::install();
    });
}

void shutdownCoreServices() {
    FLKMainQueue::setMain(nullptr);
    flk::joinReleasedThreads(true);
}
}  // namespace flk

#include "core/scene/FLKAudioTrackPlayer.h"

#include <mutex>

namespace {
struct FactoryHolder {
    std::mutex mutex;
    FLKAudioTrackPlayer::Factory factory;  // guarded by mutex
};

FactoryHolder& factoryHolder() {
    static FactoryHolder holder;
    return holder;
}
}  // namespace

void FLKAudioTrackPlayer::setFactory(Factory factory) {
    auto& holder = factoryHolder();
    std::lock_guard lock(holder.mutex);
    holder.factory = std::move(factory);
}

std::unique_ptr<FLKAudioTrackPlayer> FLKAudioTrackPlayer::playerForURL(const std::filesystem::path& url) {
    Factory factory;
    {
        auto& holder = factoryHolder();
        std::lock_guard lock(holder.mutex);
        factory = holder.factory;
    }
    return factory ? factory(url) : nullptr;
}

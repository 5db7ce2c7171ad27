#include "core/scene/FLKVideoFileTextureProvider.h"

#include <mutex>

namespace {
struct FactoryHolder {
    std::mutex mutex;
    FLKVideoFileTextureProvider::Factory factory;  // guarded by mutex
};

FactoryHolder& factoryHolder() {
    static FactoryHolder holder;
    return holder;
}
}  // namespace

void FLKVideoFileTextureProvider::setFactory(Factory factory) {
    auto& holder = factoryHolder();
    std::lock_guard lock(holder.mutex);
    holder.factory = std::move(factory);
}

std::shared_ptr<FLKVideoFileTextureProvider> FLKVideoFileTextureProvider::providerForURL(
    const std::filesystem::path& url) {
    Factory factory;
    {
        auto& holder = factoryHolder();
        std::lock_guard lock(holder.mutex);
        factory = holder.factory;
    }
    return factory ? factory(url) : nullptr;
}

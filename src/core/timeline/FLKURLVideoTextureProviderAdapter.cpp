#include "core/timeline/FLKURLVideoTextureProviderAdapter.h"

void FLKURLVideoTextureProviderAdapter::installAsVideoFileTextureProvider() {
    FLKVideoFileTextureProvider::setFactory([](const std::filesystem::path& url) {
        return std::make_shared<FLKURLVideoTextureProviderAdapter>(std::make_shared<FLKURLVideoTextureProvider>(url));
    });
}

bool FLKURLVideoTextureProviderAdapter::hasAudio() const {
    return provider_->asset()->hasAudio();
}

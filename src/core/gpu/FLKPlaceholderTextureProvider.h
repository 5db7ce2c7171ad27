#pragma once

#include <memory>
#include <mutex>

#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKTextureProvider.h"

// Holds one texture that someone else made, so that it can feed a filter.
class FLKPlaceholderTextureProvider : public FLKTextureProvider {
public:
    void refreshTexture() override {}
    std::shared_ptr<FLKGPUTexture> texture() const override {
        std::lock_guard lock(mutex_);
        return texture_;
    }
    void setTexture(std::shared_ptr<FLKGPUTexture> texture) {
        std::lock_guard lock(mutex_);
        texture_ = std::move(texture);
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<FLKGPUTexture> texture_;  // guarded by mutex_
};

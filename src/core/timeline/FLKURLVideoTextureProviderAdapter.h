#pragma once

#include <memory>

#include "core/gpu/FLKURLVideoTextureProvider.h"
#include "core/scene/FLKVideoFileTextureProvider.h"

// Lets URL video sprites play through FLKURLVideoTextureProvider: the scene
// declares what it needs of a video file player, the GPU layer has the player.
class FLKURLVideoTextureProviderAdapter : public FLKVideoFileTextureProvider {
public:
    explicit FLKURLVideoTextureProviderAdapter(std::shared_ptr<FLKURLVideoTextureProvider> provider)
        : provider_(std::move(provider)) {}

    // Makes new URL video sprites play through the display clock.
    static void installAsVideoFileTextureProvider();

    void play() override { provider_->play(); }
    void pause() override { provider_->pause(); }
    void stop() override { provider_->stop(); }
    void setCurrentTime(double seconds) override { provider_->setCurrentTime(seconds); }
    double currentTime() const override { return provider_->currentTime(); }
    bool hasAudio() const override;
    bool isPlaying() const override { return provider_->isPlaying(); }
    double duration() const override { return provider_->duration(); }
    double fps() const override { return provider_->fps(); }
    FLKSize videoSize() const override { return provider_->videoSize(); }
    int64_t numFrames() const override { return provider_->numFrames(); }
    void setShouldLoop(bool shouldLoop) override { provider_->setShouldLoop(shouldLoop); }
    void refreshTexture() override { provider_->refreshTexture(); }
    std::shared_ptr<FLKGPUTexture> texture() const override { return provider_->texture(); }

    const std::shared_ptr<FLKURLVideoTextureProvider>& provider() const { return provider_; }

private:
    const std::shared_ptr<FLKURLVideoTextureProvider> provider_;
};

#pragma once

#include "core/gpu/FLKTextureConsumer.h"
#include "core/scene/FLKVideoSprite.h"

// The video sprite a timeline feeds: it shows whatever texture its provider
// (the timeline's buffer manager of the clip under the play head) holds.
class FLKTimelineVideoSprite : public FLKVideoSprite, public FLKTextureConsumer {
public:
    FLKTimelineVideoSprite() = default;

    static std::shared_ptr<FLKTimelineVideoSprite> newWithDictionary(const FLKJSON& dictionary);
    std::string className() const override { return "FLKTimelineVideoSprite"; }

    // Held weakly; set from the clock's thread while the renderer reads it.
    std::shared_ptr<FLKTextureProvider> provider() const override;
    void setProvider(const std::shared_ptr<FLKTextureProvider>& provider) override;

    std::shared_ptr<FLKGPUTexture> texture() const override;
    // Render thread: lets the provider upload its current frame.
    void updateFrame(FLKSize drawableSize) override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKTimelineVideoSprite>(); }

private:
    mutable std::mutex providerMutex_;
    std::weak_ptr<FLKTextureProvider> provider_;  // guarded by providerMutex_
};

#pragma once

#include "core/gpu/FLKTextureConsumer.h"
#include "core/scene/FLKVideoFileTextureProvider.h"
#include "core/scene/FLKVideoSprite.h"

// A video sprite that plays a video file through its own texture provider.
class FLKURLVideoSprite : public FLKVideoSprite, public FLKTextureConsumer {
public:
    FLKURLVideoSprite() = default;
    // A sprite of zero frame playing the file, not looping.
    explicit FLKURLVideoSprite(const std::filesystem::path& videoURL);
    // The caller has already placed the file in the document's media folder.
    static std::shared_ptr<FLKURLVideoSprite> spriteWithResourceURL(const std::filesystem::path& url);

    static std::shared_ptr<FLKURLVideoSprite> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKURLVideoSprite"; }

    // Also makes a texture provider for the file.
    void setResourceURL(std::optional<std::filesystem::path> url) override;
    const std::shared_ptr<FLKVideoFileTextureProvider>& textureProvider() const { return textureProvider_; }

    // FLKTextureConsumer (the provider is held weakly; the sprite owns its
    // texture provider separately).
    std::shared_ptr<FLKTextureProvider> provider() const override;
    void setProvider(const std::shared_ptr<FLKTextureProvider>& provider) override;

    std::shared_ptr<FLKGPUTexture> texture() const override;
    // Render thread: lets the provider upload its newest frame.
    void updateFrame(FLKSize drawableSize) override;

    bool shouldLoop() const { return shouldLoop_; }
    void setShouldLoop(bool shouldLoop);
    void play();
    void pause();
    void stop();
    void setCurrentTime(double seconds);
    double currentTime() const override;
    bool hasAudio() const;
    bool isPlaying() const;
    double duration() const override;
    double fps() const;
    FLKSize videoSize() const;
    int64_t numFrames() const;

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKURLVideoSprite>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;
    void loadResource(const std::filesystem::path& url) override;

private:
    void createTextureProvider();

    bool shouldLoop_ = false;                                        // main thread only
    std::shared_ptr<FLKVideoFileTextureProvider> textureProvider_;  // main thread only; itself thread-safe
    mutable std::mutex providerMutex_;
    std::weak_ptr<FLKTextureProvider> provider_;  // guarded by providerMutex_; read by the renderer
};

#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKTextureProvider.h"
#include "core/platform/FLKError.h"
#include "core/scene/FLKSprite.h"

// A picture on a plane. The renderer binds `texture()` as fragment texture 0,
// `maskTexture()` (when set) as texture 1, and its context's default sampler.
class FLKTexturedSprite : public FLKSprite, public FLKTextureProvider {
public:
    FLKTexturedSprite() = default;
    // A quad of the texture's size at the origin.
    explicit FLKTexturedSprite(std::shared_ptr<FLKGPUTexture> texture);
    // Null when the image cannot be read (`error` names the file and why).
    static std::shared_ptr<FLKTexturedSprite> spriteWithResourceURL(const std::filesystem::path& url,
                                                                    FLKError* error = nullptr);

    static std::shared_ptr<FLKTexturedSprite> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKTexturedSprite"; }

    const std::optional<std::filesystem::path>& resourceURL() const { return resourceURL_; }
    virtual void setResourceURL(std::optional<std::filesystem::path> url) { resourceURL_ = std::move(url); }
    std::vector<std::filesystem::path> resourceURLs() const override;

    // FLKTextureProvider
    void refreshTexture() override {}
    std::shared_ptr<FLKGPUTexture> texture() const override;
    virtual void setTexture(std::shared_ptr<FLKGPUTexture> texture);
    std::shared_ptr<FLKGPUTexture> maskTexture() const;
    void setMaskTexture(std::shared_ptr<FLKGPUTexture> texture);

    std::string pipelineName() const override;
    std::shared_ptr<FLKGPUBuffer> vertexBuffer() override { return planeVertexBuffer(); }
    bool isInteractable() const override { return true; }

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKTexturedSprite>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;
    // Takes up the media file named in a stored dictionary: a picture here.
    virtual void loadResource(const std::filesystem::path& url);

private:
    // A breadcrumb for every picture or video a sprite takes up, loaded or not.
    static void logLoading(const std::filesystem::path& url);

    std::optional<std::filesystem::path> resourceURL_;  // main thread only

    // Replaced by live frames on the capture thread, read by the renderer.
    mutable std::mutex textureMutex_;
    std::shared_ptr<FLKGPUTexture> texture_;      // guarded by textureMutex_
    std::shared_ptr<FLKGPUTexture> maskTexture_;  // guarded by textureMutex_
};

namespace flk {
// A stored media path resolved against the document being read; nullopt (and
// a log line) for a path that would leave the document's media folder.
std::optional<std::filesystem::path> resolvedMediaPath(const std::string& relativePath);
}  // namespace flk

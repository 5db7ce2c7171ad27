#include "core/scene/FLKTexturedSprite.h"

#include "core/gpu/FLKPipelineNames.h"
#include "core/gpu/FLKTextureLoader.h"
#include "core/platform/FLKFileSerializationContext.h"
#include "core/platform/FLKLog.h"
#include "core/scene/FLKQuad.h"

FLK_REGISTER_SERIALIZABLE(FLKTexturedSprite);

std::optional<std::filesystem::path> flk::resolvedMediaPath(const std::string& relativePath) {
    std::filesystem::path relative(relativePath);
    bool escapes = relative.empty() || relative.is_absolute();
    for (const auto& component : relative) escapes = escapes || component == "..";
    if (escapes) {
        flk::log("Ignoring media path \"%s\": it is not inside the document's media folder", relativePath.c_str());
        return std::nullopt;
    }
    return flk::URLWithRelativeMediaPath(relativePath);
}

FLKTexturedSprite::FLKTexturedSprite(std::shared_ptr<FLKGPUTexture> texture) {
    FLKRect frame = texture ? FLKRect(0, 0, texture->width(), texture->height()) : FLKRect::zero();
    setShape(FLKQuad::quadWithFrame(frame));
    texture_ = std::move(texture);
}

std::shared_ptr<FLKTexturedSprite> FLKTexturedSprite::spriteWithResourceURL(const std::filesystem::path& url,
                                                                            FLKError* error) {
    logLoading(url);
    auto texture = FLKTextureLoader::texture2DWithImageURL(url, false, error);
    if (!texture) return nullptr;
    auto sprite = std::make_shared<FLKTexturedSprite>(std::move(texture));
    sprite->setResourceURL(url);
    return sprite;
}

std::shared_ptr<FLKTexturedSprite> FLKTexturedSprite::newWithDictionary(const FLKJSON& dictionary) {
    return makeWithDictionary<FLKTexturedSprite>(dictionary);
}

void FLKTexturedSprite::initWithDictionary(const FLKJSON& dictionary) {
    FLKSprite::initWithDictionary(dictionary);
    auto stored = dictionary.find("resourceURL");
    if (stored == dictionary.end() || !stored->is_string()) return;
    if (auto url = flk::resolvedMediaPath(stored->get<std::string>())) {
        logLoading(*url);
        loadResource(*url);
    }
}

void FLKTexturedSprite::logLoading(const std::filesystem::path& url) {
    flk::breadcrumb(__func__, __LINE__, "[LOADING SPRITE] " + url.filename().string());
}

void FLKTexturedSprite::loadResource(const std::filesystem::path& url) {
    FLKError error;
    auto texture = FLKTextureLoader::texture2DWithImageURL(url, false, &error);
    if (!texture) {
        // The sprite still loads, without its picture.
        flk::log("Could not load image %s: %s", url.c_str(), error.fullMessage().c_str());
        return;
    }
    setTexture(std::move(texture));
    setResourceURL(url);
}

FLKJSON FLKTexturedSprite::serialized() const {
    auto dictionary = FLKSprite::serialized();
    if (resourceURL_) dictionary["resourceURL"] = flk::relativeMediaPath(*resourceURL_);
    return dictionary;
}

std::vector<std::filesystem::path> FLKTexturedSprite::resourceURLs() const {
    if (!resourceURL_) return {};
    return {*resourceURL_};
}

std::shared_ptr<FLKGPUTexture> FLKTexturedSprite::texture() const {
    std::lock_guard lock(textureMutex_);
    return texture_;
}

void FLKTexturedSprite::setTexture(std::shared_ptr<FLKGPUTexture> texture) {
    std::lock_guard lock(textureMutex_);
    texture_ = std::move(texture);
}

std::shared_ptr<FLKGPUTexture> FLKTexturedSprite::maskTexture() const {
    std::lock_guard lock(textureMutex_);
    return maskTexture_;
}

void FLKTexturedSprite::setMaskTexture(std::shared_ptr<FLKGPUTexture> texture) {
    std::lock_guard lock(textureMutex_);
    maskTexture_ = std::move(texture);
}

std::string FLKTexturedSprite::pipelineName() const {
    auto current = texture();
    bool biplanar = current && current->chromaPlane();
    if (maskTexture()) {
        return biplanar ? FLKPipelineNameVertexFragmentTexturedMaskedYUV : FLKPipelineNameVertexFragmentTexturedMaskedBGRA;
    }
    return biplanar ? FLKPipelineNameVertexFragmentTexturedYUV : FLKPipelineNameVertexFragmentTexturedBGRA;
}

FLKObject::Ptr FLKTexturedSprite::copy() const {
    auto sprite = std::static_pointer_cast<FLKTexturedSprite>(FLKSprite::copy());
    sprite->resourceURL_ = resourceURL_;
    sprite->setTexture(texture());
    sprite->setMaskTexture(maskTexture());
    return sprite;
}

bool FLKTexturedSprite::isEqual(const FLKObject& other) const {
    return FLKSprite::isEqual(other) && resourceURL_ == static_cast<const FLKTexturedSprite&>(other).resourceURL_;
}

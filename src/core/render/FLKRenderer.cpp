#include "core/render/FLKRenderer.h"

#include <epoxy/gl.h>

#include "core/platform/FLKLog.h"
#include "core/scene/FLKRenderable.h"
#include "core/scene/FLKTexturedSprite.h"

FLKRenderer::FLKRenderer(std::shared_ptr<FLKContext> context, int inflightCount)
    : context_(std::move(context)), inflightSemaphore_(inflightCount) {}

FLKRenderer::~FLKRenderer() {
    // Framebuffers and vertex arrays belong to this context: delete them with it current.
    FLKContext::Scope scope(*context_);
    if (!scope.isCurrent()) {
        // No context to delete them in: they die with the context.
        (void)multisampleTexture_.release();
        (void)pipelineFactory_.release();
        return;
    }
    multisampleTexture_.reset();
    pipelineFactory_.reset();
    cameraUniformBuffer_.reset();
}

std::shared_ptr<FLKRendererDataSource> FLKRenderer::dataSource() const {
    std::lock_guard lock(mutex_);
    return dataSource_.lock();
}

void FLKRenderer::setDataSource(std::weak_ptr<FLKRendererDataSource> dataSource) {
    std::lock_guard lock(mutex_);
    dataSource_ = std::move(dataSource);
}

std::shared_ptr<FLKScene> FLKRenderer::scene() const {
    std::lock_guard lock(mutex_);
    return scene_;
}

void FLKRenderer::setScene(std::shared_ptr<FLKScene> scene) {
    std::lock_guard lock(mutex_);
    scene_ = std::move(scene);
}

FLKRenderPipelineFactory& FLKRenderer::pipelineFactory() {
    if (!pipelineFactory_) pipelineFactory_ = std::make_unique<FLKRenderPipelineFactory>(context_);
    return *pipelineFactory_;
}

bool FLKRenderer::multisampleTextureFitsFramebufferTexture(const FLKGPUTexture& texture) const {
    return multisampleTexture_ && multisampleTexture_->fits(texture.width(), texture.height());
}

bool FLKRenderer::prepareMultisampleTexture(FLKGPUTexture& framebufferTexture) {
    if (clearRequested_.exchange(false) || !multisampleTextureFitsFramebufferTexture(framebufferTexture)) {
        multisampleTexture_.reset();
    }
    if (!multisampleTexture_) {
        multisampleTexture_ = FLKMultisampleTarget::make(framebufferTexture.width(), framebufferTexture.height());
    }
    return multisampleTexture_ != nullptr;
}

void FLKRenderer::render() {
    inflightSemaphore_.acquire();
    auto source = dataSource();
    auto framebufferTexture = source ? source->textureForRenderer(*this) : nullptr;
    if (!framebufferTexture) {
        // The slot stays taken: after three such frames rendering blocks.
        flk::log("No framebuffer texture present");
        return;
    }
    FLKContext::Scope scope(*context_);
    unsigned int resolveTexture = scope.isCurrent() ? framebufferTexture->name() : 0;
    if (!resolveTexture || !prepareMultisampleTexture(*framebufferTexture)) {
        flk::log("Could not prepare a %dx%d render target", framebufferTexture->width(), framebufferTexture->height());
        inflightSemaphore_.release();
        return;
    }
    multisampleTexture_->beginPass();
    if (auto scene = this->scene()) drawNodes(*scene, source->drawableSizeForRenderer(*this));
    multisampleTexture_->resolveInto(resolveTexture);
    finishRenderingOnCommandBuffer(*framebufferTexture);
    inflightSemaphore_.release();
}

void FLKRenderer::drawNodes(const FLKScene& scene, FLKSize drawableSize) {
    auto camera = scene.mainCamera();
    if (!camera) return;
    auto matrix = camera->uniforms();
    if (!cameraUniformBuffer_) {
        cameraUniformBuffer_ = std::make_unique<FLKGPUBuffer>(matrix.data(), sizeof matrix);
    } else {
        cameraUniformBuffer_->setContents(matrix.data(), sizeof matrix);
    }
    FLKRenderPipeline::setCameraUniformBuffer(*cameraUniformBuffer_);
    // A copy: nodes may be added or removed while this frame draws.
    const std::vector<FLKObject::Ptr> nodes = scene.recursiveAllChildren();
    for (const auto& node : nodes) drawNode(node, drawableSize);
    quadGeometry_.prune();
}

void FLKRenderer::drawNode(const FLKObject::Ptr& node, FLKSize drawableSize) {
    auto* renderable = dynamic_cast<FLKRenderable*>(node.get());
    if (!renderable) return;
    renderable->updateFrame(drawableSize);
    FLKRenderPipeline* pipeline = pipelineFactory().pipelineStateWithName(renderable->pipelineName());
    if (!pipeline) return;

    std::shared_ptr<FLKGPUBuffer> vertexBuffer, indexBuffer;
    if (auto sprite = std::dynamic_pointer_cast<FLKTexturedSprite>(node)) {
        auto texture = sprite->texture();
        if (!texture) return;
        FLKRenderPipeline::setFragmentTexture(*texture, kFLKColorTextureUnit);
        FLKRenderPipeline::setFragmentSampler(context_->samplerState(), kFLKColorTextureUnit);
        if (auto chroma = texture->chromaPlane()) {
            FLKRenderPipeline::setFragmentTexture(*chroma, kFLKChromaTextureUnit);
            FLKRenderPipeline::setFragmentSampler(context_->samplerState(), kFLKChromaTextureUnit);
        }
        if (auto mask = sprite->maskTexture()) {
            FLKRenderPipeline::setFragmentTexture(*mask, kFLKMaskTextureUnit);
            FLKRenderPipeline::setFragmentSampler(context_->samplerState(), kFLKMaskTextureUnit);
        }
        if (texturedGeometry() == TexturedGeometry::projectiveQuads) {
            auto geometry = quadGeometry_.geometryForSprite(sprite);
            vertexBuffer = geometry.vertexBuffer;
            indexBuffer = geometry.indexBuffer;
        }
    }
    if (!vertexBuffer) {
        vertexBuffer = renderable->vertexBuffer();
        indexBuffer = renderable->indexBuffer();
    }
    if (!vertexBuffer || !indexBuffer) return;
    pipeline->apply();
    pipeline->setVertexBuffer(*vertexBuffer);
    pipeline->drawIndexed(*indexBuffer);
}

void FLKRenderer::finishRenderingOnCommandBuffer(FLKGPUTexture&) {
    auto source = dataSource();
    if (auto drawable = source ? source->drawableForRenderer(*this) : nullptr) drawable->present();
}

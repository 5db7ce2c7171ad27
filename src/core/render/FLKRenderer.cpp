#include "core/render/FLKRenderer.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cstring>

#include "core/gpu/FLKPipelineNames.h"
#include "core/platform/FLKLog.h"
#include "core/render/FLKProjectiveQuad.h"
#include "core/scene/FLKColorGradientSprite.h"
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
    if (directFramebuffer_) glDeleteFramebuffers(1, &directFramebuffer_);
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
    const int samples = multisampleCount();
    if (clearRequested_.exchange(false) || !multisampleTextureFitsFramebufferTexture(framebufferTexture) ||
        multisampleTexture_->sampleCount() != samples) {
        multisampleTexture_.reset();
    }
    if (!multisampleTexture_) {
        multisampleTexture_ =
            FLKMultisampleTarget::make(framebufferTexture.width(), framebufferTexture.height(), samples);
    }
    return multisampleTexture_ != nullptr;
}

bool FLKRenderer::render() {
    inflightSemaphore_.acquire();
    // However the frame ends, its slot is given back: a slot kept would
    // block every frame after the last free one for good.
    struct SlotRelease {
        std::counting_semaphore<>& semaphore;
        ~SlotRelease() { semaphore.release(); }
    } slotRelease{inflightSemaphore_};
    auto source = dataSource();
    auto framebufferTexture = source ? source->textureForRenderer(*this) : nullptr;
    if (!framebufferTexture) {
        flk::log("No framebuffer texture present");
        return false;
    }
    FLKContext::Scope scope(*context_);
    std::vector<DrawItem> items;
    bool drawn = false;
    if (scope.isCurrent() && framebufferTexture->name()) {
        if (auto scene = this->scene()) {
            items = prepareNodes(*scene, source->drawableSizeForRenderer(*this), framebufferTexture->width(),
                                 framebufferTexture->height());
        }
        lastFrameAnalytic_ = canDrawWithAnalyticCoverage(items);
        if (lastFrameAnalytic_) {
            drawWithAnalyticCoverage(items, *framebufferTexture);
            drawn = true;
        } else {
            drawn = drawMultisampled(items, *framebufferTexture);
        }
    }
    if (!drawn) {
        flk::log("Could not prepare a %dx%d render target", framebufferTexture->width(), framebufferTexture->height());
        return false;
    }
    finishRenderingOnCommandBuffer(*framebufferTexture);
    return true;
}

std::vector<FLKRenderer::DrawItem> FLKRenderer::prepareNodes(const FLKScene& scene, FLKSize drawableSize, int width,
                                                             int height) {
    std::vector<DrawItem> items;
    auto camera = scene.mainCamera();
    if (!camera) return items;
    auto matrix = camera->uniforms();
    if (!cameraUniformBuffer_) {
        cameraUniformBuffer_ = std::make_unique<FLKGPUBuffer>(matrix.data(), sizeof matrix);
    } else {
        cameraUniformBuffer_->setContents(matrix.data(), sizeof matrix);
    }
    // A copy: nodes may be added or removed while this frame draws.
    const std::vector<FLKObject::Ptr> nodes = scene.recursiveAllChildren();
    for (const auto& node : nodes) {
        if (auto item = prepareNode(node, drawableSize, matrix, width, height)) items.push_back(std::move(*item));
    }
    quadGeometry_.prune();
    coverageGeometry_.prune();
    return items;
}

std::optional<FLKRenderer::DrawItem> FLKRenderer::prepareNode(const FLKObject::Ptr& node, FLKSize drawableSize,
                                                              const FLKCoverageQuad::Matrix& matrix, int width,
                                                              int height) {
    auto* renderable = dynamic_cast<FLKRenderable*>(node.get());
    if (!renderable) return std::nullopt;
    renderable->updateFrame(drawableSize);
    DrawItem item;
    item.pipelineName = renderable->pipelineName();
    if (!pipelineFactory().pipelineStateWithName(item.pipelineName)) return std::nullopt;
    if (auto sprite = std::dynamic_pointer_cast<FLKTexturedSprite>(node)) {
        item.texture = sprite->texture();
        if (!item.texture) return std::nullopt;
        item.maskTexture = sprite->maskTexture();
        if (texturedGeometry() == TexturedGeometry::projectiveQuads) {
            auto geometry = quadGeometry_.geometryForSprite(sprite);
            item.vertexBuffer = geometry.vertexBuffer;
            item.indexBuffer = geometry.indexBuffer;
        }
    }
    if (!item.vertexBuffer) {
        item.vertexBuffer = renderable->vertexBuffer();
        item.indexBuffer = renderable->indexBuffer();
    }
    if (!item.vertexBuffer || !item.indexBuffer) return std::nullopt;
    if (antialiasing() == Antialiasing::analyticCoverage) {
        addCoverageGeometry(item, node, *renderable, matrix, width, height);
    }
    return item;
}

void FLKRenderer::addCoverageGeometry(DrawItem& item, const FLKObject::Ptr& node, FLKRenderable& renderable,
                                      const FLKCoverageQuad::Matrix& matrix, int width, int height) {
    auto keep = [&](const auto& geometry) {
        using Part = FLKCoverageGeometryCache::Part;
        item.interiorVertexBuffer = coverageGeometry_.vertexBuffer(
            node, Part::interior, geometry.interior.data(), geometry.interior.size() * sizeof geometry.interior[0]);
        item.interiorHasHole = geometry.interiorHasHole;
        item.bandVertexBuffer =
            coverageGeometry_.vertexBuffer(node, Part::band, geometry.band.data(), sizeof geometry.band);
        item.interiorNeedsCoverage = geometry.interiorNeedsCoverage;
        item.coverageEdges = geometry.edges;
    };
    if (auto sprite = std::dynamic_pointer_cast<FLKTexturedSprite>(node)) {
        // Grids only approximate the quad's map; frames with them are multisampled.
        if (texturedGeometry() != TexturedGeometry::projectiveQuads) return;
        auto plane = FLKQuadGeometryCache::drawnPlane(*sprite);
        auto hole = transparentHole(item);
        if (auto geometry =
                plane ? FLKCoverageQuad::texturedGeometry(*plane, matrix, width, height, hole) : std::nullopt) {
            keep(*geometry);
            // Premultiplied texels of alpha 1 replace what is behind them.
            item.interiorIsOpaque =
                item.pipelineName == FLKPipelineNameVertexFragmentTexturedBGRA && item.texture->isOpaque();
        }
        return;
    }
    if (!dynamic_cast<FLKColorGradientSprite*>(&renderable)) return;
    // A gradient is one quad of four records drawn as the triangles (0, 1, 2) and (1, 3, 2).
    auto records = item.vertexBuffer->contents();
    auto indices = item.indexBuffer->contents();
    std::array<FLKColoredVertex, 4> corners{};
    if (records.size() != sizeof corners || indices.size() != sizeof FLKProjectiveQuad::kIndices ||
        std::memcmp(indices.data(), FLKProjectiveQuad::kIndices.data(), indices.size()) != 0) {
        return;
    }
    std::memcpy(corners.data(), records.data(), sizeof corners);
    if (auto geometry = FLKCoverageQuad::coloredGeometry(corners, matrix, width, height)) {
        keep(*geometry);
        // Equal alphas interpolate to exactly that value everywhere inside.
        item.interiorIsOpaque = std::all_of(corners.begin(), corners.end(),
                                            [](const FLKColoredVertex& corner) { return corner.color[3] == 1.0f; });
    }
}

std::optional<std::array<double, 4>> FLKRenderer::transparentHole(const DrawItem& item) {
    // Only where a zero texel draws nothing: premultiplied colour, alone or times a mask.
    if (item.pipelineName != FLKPipelineNameVertexFragmentTexturedBGRA &&
        item.pipelineName != FLKPipelineNameVertexFragmentTexturedMaskedBGRA) {
        return std::nullopt;
    }
    auto rect = item.texture ? item.texture->transparentRect() : std::nullopt;
    if (!rect) return std::nullopt;
    // One texel in from each side: linear filtering there reads zero texels only.
    double w = item.texture->width(), h = item.texture->height();
    return std::array<double, 4>{(rect->x0 + 1) / w, (rect->y0 + 1) / h, (rect->x1 - 1) / w, (rect->y1 - 1) / h};
}

bool FLKRenderer::canDrawWithAnalyticCoverage(const std::vector<DrawItem>& items) {
    if (antialiasing() != Antialiasing::analyticCoverage) return false;
    for (const auto& item : items) {
        if (!item.bandVertexBuffer || !pipelineFactory().coveragePipelineStateWithName(item.pipelineName)) {
            return false;
        }
    }
    return true;
}

bool FLKRenderer::drawMultisampled(const std::vector<DrawItem>& items, FLKGPUTexture& framebufferTexture) {
    if (!prepareMultisampleTexture(framebufferTexture)) return false;
    multisampleTexture_->beginPass();
    for (const auto& item : items) drawItem(item);
    multisampleTexture_->resolveInto(framebufferTexture.name());
    return true;
}

void FLKRenderer::drawWithAnalyticCoverage(const std::vector<DrawItem>& items, FLKGPUTexture& framebufferTexture) {
    if (!directFramebuffer_) glCreateFramebuffers(1, &directFramebuffer_);
    glNamedFramebufferTexture(directFramebuffer_, GL_COLOR_ATTACHMENT0, framebufferTexture.name(), 0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, directFramebuffer_);
    glViewport(0, 0, framebufferTexture.width(), framebufferTexture.height());
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_CULL_FACE);
    const float clear[4] = {0, 0, 0, 0};
    glClearNamedFramebufferfv(directFramebuffer_, GL_COLOR, 0, clear);
    for (const auto& item : items) drawItemWithAnalyticCoverage(item);
}

void FLKRenderer::bindTextures(const DrawItem& item) {
    if (cameraUniformBuffer_) FLKRenderPipeline::setCameraUniformBuffer(*cameraUniformBuffer_);
    if (item.texture) {
        FLKRenderPipeline::setFragmentTexture(*item.texture, kFLKColorTextureUnit);
        FLKRenderPipeline::setFragmentSampler(context_->samplerState(), kFLKColorTextureUnit);
        if (auto chroma = item.texture->chromaPlane()) {
            FLKRenderPipeline::setFragmentTexture(*chroma, kFLKChromaTextureUnit);
            FLKRenderPipeline::setFragmentSampler(context_->samplerState(), kFLKChromaTextureUnit);
            bindColorimetry(item.texture->colorimetry());
        }
    }
    if (item.maskTexture) {
        FLKRenderPipeline::setFragmentTexture(*item.maskTexture, kFLKMaskTextureUnit);
        FLKRenderPipeline::setFragmentSampler(context_->samplerState(), kFLKMaskTextureUnit);
    }
}

void FLKRenderer::bindColorimetry(const FLKYCbCrColorimetry& colorimetry) {
    if (!colorimetryUniformBuffer_) {
        colorimetryUniformBuffer_ = std::make_unique<FLKGPUBuffer>(&colorimetry, sizeof colorimetry);
    } else {
        colorimetryUniformBuffer_->setContents(&colorimetry, sizeof colorimetry);
    }
    FLKRenderPipeline::setColorimetryUniformBuffer(*colorimetryUniformBuffer_);
}

void FLKRenderer::drawItem(const DrawItem& item) {
    FLKRenderPipeline* pipeline = pipelineFactory().pipelineStateWithName(item.pipelineName);
    if (!pipeline) return;
    bindTextures(item);
    pipeline->apply();
    pipeline->setVertexBuffer(*item.vertexBuffer);
    pipeline->drawIndexed(*item.indexBuffer);
}

void FLKRenderer::drawItemWithAnalyticCoverage(const DrawItem& item) {
    using Part = FLKCoverageGeometryCache::Part;
    FLKRenderPipeline* plain = pipelineFactory().pipelineStateWithName(item.pipelineName);
    FLKRenderPipeline* covering = pipelineFactory().coveragePipelineStateWithName(item.pipelineName);
    if (!plain || !covering) return;
    bindTextures(item);
    // Every sample of an interior pixel is inside: the plain pipeline draws what the samples would average to.
    FLKRenderPipeline* interior = item.interiorNeedsCoverage ? covering : plain;
    interior->apply();
    // Over with alpha 1 replaces what is behind; without blending the rasteriser skips reading it.
    if (item.interiorIsOpaque && !item.interiorNeedsCoverage) glDisable(GL_BLEND);
    interior->setCoverageEdges(item.coverageEdges);
    interior->setVertexBuffer(*item.interiorVertexBuffer);
    interior->drawIndexed(*coverageGeometry_.indexBuffer(Part::interior, item.interiorHasHole));
    covering->apply();
    covering->setCoverageEdges(item.coverageEdges);
    covering->setVertexBuffer(*item.bandVertexBuffer);
    covering->drawIndexed(*coverageGeometry_.indexBuffer(Part::band));
}

void FLKRenderer::finishRenderingOnCommandBuffer(FLKGPUTexture&) {
    auto source = dataSource();
    if (auto drawable = source ? source->drawableForRenderer(*this) : nullptr) drawable->present();
}

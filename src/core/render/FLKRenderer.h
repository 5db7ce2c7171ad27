#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <semaphore>
#include <string>
#include <vector>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUBuffer.h"
#include "core/gpu/FLKRenderPipelineFactory.h"
#include "core/gpu/FLKYCbCrColorimetry.h"
#include "core/render/FLKCoverageGeometryCache.h"
#include "core/render/FLKCoverageQuad.h"
#include "core/render/FLKMultisampleTarget.h"
#include "core/render/FLKQuadGeometryCache.h"
#include "core/render/FLKRendererDataSource.h"
#include "core/scene/FLKRenderable.h"
#include "core/scene/FLKScene.h"

// Draws one frame of a scene: every renderable node in ascending zOrder,
// through the main camera, antialiased as by 4x multisampling, into the data
// source's framebuffer texture.
//
// Threads: render() and everything GL run on the render thread, with the
// renderer's context made current inside render(). Scene, data source and
// drawing options may be set from another thread between frames.
class FLKRenderer {
public:
    // How textured sprites are drawn. Their vertex grids only approximate the
    // projective map piecewise, and a rasteriser on the CPU pays for every
    // triangle; two triangles with projective weights are exact and cheap.
    // Quads that are not strictly convex always use their grid.
    enum class TexturedGeometry { projectiveQuads, planeGrids };

    // How edges are antialiased. A 4x multisampled target resolved into the
    // framebuffer texture is what a GPU does cheaply; a rasteriser on the CPU
    // pays for every sample, for the clear and for the resolve. Analytic
    // coverage draws straight into the framebuffer texture and weighs each
    // edge pixel by the share of its 4x sample positions inside the quad: the
    // same pixels wherever edges of different nodes do not cross one pixel.
    // Frames with a node that is not a convex quad on screen (or with plane
    // grids) are multisampled.
    enum class Antialiasing { analyticCoverage, multisample };

    explicit FLKRenderer(std::shared_ptr<FLKContext> context = FLKContext::sharedContext(), int inflightCount = 3);
    virtual ~FLKRenderer();
    FLKRenderer(const FLKRenderer&) = delete;
    FLKRenderer& operator=(const FLKRenderer&) = delete;

    const std::shared_ptr<FLKContext>& context() const { return context_; }

    std::shared_ptr<FLKRendererDataSource> dataSource() const;
    void setDataSource(std::weak_ptr<FLKRendererDataSource> dataSource);
    std::shared_ptr<FLKScene> scene() const;
    void setScene(std::shared_ptr<FLKScene> scene);
    TexturedGeometry texturedGeometry() const { return texturedGeometry_.load(); }
    void setTexturedGeometry(TexturedGeometry geometry) { texturedGeometry_.store(geometry); }
    Antialiasing antialiasing() const { return antialiasing_.load(); }
    void setAntialiasing(Antialiasing antialiasing) { antialiasing_.store(antialiasing); }
    // Samples a pixel of multisampled frames (4 by default; 1 draws them unsmoothed).
    int multisampleCount() const { return multisampleCount_.load(); }
    void setMultisampleCount(int count) { multisampleCount_.store(count); }
    // How the last frame was drawn. Render thread only.
    bool lastFrameUsedAnalyticCoverage() const { return lastFrameAnalytic_; }

    // Draws one frame and hands it on (finishRenderingOnCommandBuffer).
    // False when there was nothing to draw into or the frame could not be
    // drawn; nothing was handed on then.
    bool render();

    // Render thread only. Null before the first frame.
    FLKMultisampleTarget* multisampleTexture() const { return multisampleTexture_.get(); }
    bool multisampleTextureFitsFramebufferTexture(const FLKGPUTexture& texture) const;
    // Drops the multisample target; the next frame makes a new one. Any thread.
    void clearMultisampleTexture() { clearRequested_.store(true); }
    // Made on first use with the context current.
    FLKRenderPipelineFactory& pipelineFactory();

protected:
    // After the frame is resolved into `texture`: presents the data source's
    // drawable; the off-screen renderer reads the pixels back instead.
    virtual void finishRenderingOnCommandBuffer(FLKGPUTexture& texture);

private:
    // One node's draw call, with its coverage geometry when it has one.
    struct DrawItem {
        std::string pipelineName;
        std::shared_ptr<FLKGPUTexture> texture;
        std::shared_ptr<FLKGPUTexture> maskTexture;
        std::shared_ptr<FLKGPUBuffer> vertexBuffer;
        std::shared_ptr<FLKGPUBuffer> indexBuffer;
        // Analytic coverage: the interior drawn as it is, the band around the edges with coverage.
        std::shared_ptr<FLKGPUBuffer> interiorVertexBuffer;
        std::shared_ptr<FLKGPUBuffer> bandVertexBuffer;
        bool interiorNeedsCoverage = false;
        bool interiorIsOpaque = false;  // alpha 1 throughout: drawn without blending
        bool interiorHasHole = false;   // leaves out where the texture is transparent
        std::array<float, 16> coverageEdges{};
    };

    bool prepareMultisampleTexture(FLKGPUTexture& framebufferTexture);
    std::vector<DrawItem> prepareNodes(const FLKScene& scene, FLKSize drawableSize, int width, int height);
    std::optional<DrawItem> prepareNode(const FLKObject::Ptr& node, FLKSize drawableSize,
                                        const FLKCoverageQuad::Matrix& matrix, int width, int height);
    void addCoverageGeometry(DrawItem& item, const FLKObject::Ptr& node, FLKRenderable& renderable,
                             const FLKCoverageQuad::Matrix& matrix, int width, int height);
    static std::optional<std::array<double, 4>> transparentHole(const DrawItem& item);
    bool canDrawWithAnalyticCoverage(const std::vector<DrawItem>& items);
    bool drawMultisampled(const std::vector<DrawItem>& items, FLKGPUTexture& framebufferTexture);
    void drawWithAnalyticCoverage(const std::vector<DrawItem>& items, FLKGPUTexture& framebufferTexture);
    void bindTextures(const DrawItem& item);
    void bindColorimetry(const FLKYCbCrColorimetry& colorimetry);
    void drawItem(const DrawItem& item);
    void drawItemWithAnalyticCoverage(const DrawItem& item);

    const std::shared_ptr<FLKContext> context_;
    std::counting_semaphore<> inflightSemaphore_;

    mutable std::mutex mutex_;
    std::weak_ptr<FLKRendererDataSource> dataSource_;  // guarded by mutex_
    std::shared_ptr<FLKScene> scene_;                  // guarded by mutex_
    std::atomic<TexturedGeometry> texturedGeometry_{TexturedGeometry::projectiveQuads};
    std::atomic<Antialiasing> antialiasing_{Antialiasing::analyticCoverage};
    std::atomic<int> multisampleCount_{FLKMultisampleTarget::kSampleCount};
    std::atomic<bool> clearRequested_{false};

    // Render thread only.
    std::unique_ptr<FLKRenderPipelineFactory> pipelineFactory_;
    std::unique_ptr<FLKMultisampleTarget> multisampleTexture_;
    std::unique_ptr<FLKGPUBuffer> cameraUniformBuffer_;
    std::unique_ptr<FLKGPUBuffer> colorimetryUniformBuffer_;
    FLKQuadGeometryCache quadGeometry_;
    FLKCoverageGeometryCache coverageGeometry_;
    unsigned int directFramebuffer_ = 0;  // draws analytic frames into the framebuffer texture
    bool lastFrameAnalytic_ = false;
};

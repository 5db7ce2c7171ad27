#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <semaphore>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUBuffer.h"
#include "core/gpu/FLKRenderPipelineFactory.h"
#include "core/render/FLKMultisampleTarget.h"
#include "core/render/FLKQuadGeometryCache.h"
#include "core/render/FLKRendererDataSource.h"
#include "core/scene/FLKScene.h"

// Draws one frame of a scene: every renderable node in ascending zOrder,
// through the main camera, into a 4x multisampled target resolved into the
// data source's framebuffer texture.
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

    // Draws one frame and hands it on (finishRenderingOnCommandBuffer).
    void render();

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
    bool prepareMultisampleTexture(FLKGPUTexture& framebufferTexture);
    void drawNodes(const FLKScene& scene, FLKSize drawableSize);
    void drawNode(const FLKObject::Ptr& node, FLKSize drawableSize);

    const std::shared_ptr<FLKContext> context_;
    std::counting_semaphore<> inflightSemaphore_;

    mutable std::mutex mutex_;
    std::weak_ptr<FLKRendererDataSource> dataSource_;  // guarded by mutex_
    std::shared_ptr<FLKScene> scene_;                  // guarded by mutex_
    std::atomic<TexturedGeometry> texturedGeometry_{TexturedGeometry::projectiveQuads};
    std::atomic<bool> clearRequested_{false};

    // Render thread only.
    std::unique_ptr<FLKRenderPipelineFactory> pipelineFactory_;
    std::unique_ptr<FLKMultisampleTarget> multisampleTexture_;
    std::unique_ptr<FLKGPUBuffer> cameraUniformBuffer_;
    FLKQuadGeometryCache quadGeometry_;
};

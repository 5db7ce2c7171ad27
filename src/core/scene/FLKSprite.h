#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "core/scene/FLKBounding.h"
#include "core/scene/FLKInteractable.h"
#include "core/scene/FLKKeyframeAnimatable.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKRenderable.h"
#include "core/scene/FLKShapeEditable.h"
#include "core/scene/FLKTransformable.h"

// A visible node: a plane drawn with a named pipeline from its own buffers.
//
// Threads: the model changes on the main thread; the renderer reads the
// geometry and the cached buffers on the thread that renders this scene, and
// a live sprite takes frames on the capture thread. Shape and buffers are
// therefore guarded by `geometryMutex_`.
class FLKSprite : public FLKObject,
                  public FLKTransformable,
                  public FLKShapeEditable,
                  public FLKInteractable,
                  public FLKBounding,
                  public FLKKeyframeAnimatable,
                  public FLKRenderable {
public:
    FLKSprite() = default;

    static std::shared_ptr<FLKSprite> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKSprite"; }

    // FLKShapeEditable: the sprite keeps a copy and drops its cached buffers.
    std::shared_ptr<FLKShape> shape() const override { return plane(); }
    void setShape(const std::shared_ptr<FLKShape>& shape) override;
    std::shared_ptr<FLKPlane> plane() const;

    // FLKKeyframeAnimatable: the centre of the bounds.
    FLKPoint position() const override;
    void setPosition(FLKPoint position) override;

    // FLKTransformable: each replaces the shape with the transformed one.
    void moveBy(FLKPoint delta) override;
    void moveTo(FLKPoint point) override;
    void scaleBy(double factor) override;
    void scaleBy(double factor, FLKPoint referencePoint) override;

    bool hitTest(FLKPoint point) const override;
    bool isInteractable() const override { return false; }
    // The shape's bounds; zero without a shape.
    FLKRect bounds() const override;

    // FLKRenderable
    void updateFrame(FLKSize) override {}
    std::string pipelineName() const override;
    void setPipelineName(std::string name);
    std::shared_ptr<FLKGPUBuffer> vertexBuffer() override;
    std::shared_ptr<FLKGPUBuffer> indexBuffer() override;

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKSprite>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;

    // The plane that is drawn (a video sprite draws its oriented plane).
    virtual std::shared_ptr<FLKPlane> drawnPlane() const { return plane(); }
    // Drops both cached buffers so the next frame rebuilds them.
    void resetBuffers();
    // The cached vertex buffer, built from the drawn plane's vertex records on first use.
    std::shared_ptr<FLKGPUBuffer> planeVertexBuffer();
    // Stores a vertex buffer built by a subclass in its own format.
    std::shared_ptr<FLKGPUBuffer> cachedVertexBuffer() const;
    void setCachedVertexBuffer(std::shared_ptr<FLKGPUBuffer> buffer);

private:
    mutable std::mutex geometryMutex_;
    std::shared_ptr<FLKPlane> shape_;            // guarded by geometryMutex_
    std::shared_ptr<FLKGPUBuffer> vertexBuffer_;  // guarded by geometryMutex_
    std::shared_ptr<FLKGPUBuffer> indexBuffer_;   // guarded by geometryMutex_
    std::string pipelineName_;                    // guarded by geometryMutex_
    // Bumped whenever the buffers are dropped, so a buffer built from a plane
    // that changed meanwhile is not kept.
    uint64_t geometryGeneration_ = 0;  // guarded by geometryMutex_

    uint64_t geometryGeneration() const;
    std::shared_ptr<FLKGPUBuffer> cachedPlaneBuffer(std::shared_ptr<FLKGPUBuffer> FLKSprite::*slot, bool vertices);
};

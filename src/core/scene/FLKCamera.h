#pragma once

#include <array>
#include <memory>
#include <mutex>

#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"
#include "core/scene/FLKObject.h"
#include "core/scene/FLKShape.h"
#include "core/scene/FLKTransformable.h"

// The 2-D camera through which a scene is seen. `frame` is the part of the
// scene (scene units) that is shown, `viewport` the drawable area (screen
// units); scale is viewport size / frame size.
class FLKCamera : public FLKObject, public FLKTransformable {
public:
    // Column-major orthographic projection, y down: the 64 bytes the vertex
    // shaders read.
    using Matrix = std::array<float, 16>;

    // The viewport a new camera starts with: the render context's initial size.
    static constexpr FLKSize kDefaultViewportSize{720, 720};

    FLKCamera();
    static std::shared_ptr<FLKCamera> cameraWithFrame(const FLKRect& frame);

    static std::shared_ptr<FLKCamera> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKCamera"; }

    FLKRect frame() const { return frame_; }
    void setFrame(const FLKRect& frame);
    FLKRect viewport() const { return viewport_; }
    void setViewport(const FLKRect& viewport);
    // The flag is accepted for callers' sake; the frame origin is always kept.
    void setViewportSize(FLKSize size, bool byOffsetingContent);
    // Fits the shape's height into the viewport.
    void focus(const std::shared_ptr<FLKShape>& shape);

    double scale() const { return scale_; }
    double minScale() const { return minScale_; }
    double maxScale() const { return maxScale_; }
    void setScale(double scale);
    // `referencePoint` is in screen units: the scene point under it stays there.
    void setScale(double scale, FLKPoint referencePoint);
    FLKPoint offset() const { return offset_; }
    void setOffset(FLKPoint offset) { offset_ = offset; }

    // FLKTransformable. moveBy is in screen units; scaleBy adds to the scale.
    void moveBy(FLKPoint delta) override;
    void moveTo(FLKPoint point) override;
    void scaleBy(double delta) override;
    void scaleBy(double delta, FLKPoint referencePoint) override;

    FLKSize contextSize() const { return viewport_.size; }
    FLKPoint center() const;

    FLKPoint screenPointFromScenePoint(FLKPoint scenePoint) const;
    FLKPoint scenePointForScreenPoint(FLKPoint screenPoint) const;
    FLKRect sceneRectFromScreenRect(const FLKRect& screenRect) const;
    FLKRect screenRectFromSceneRect(const FLKRect& sceneRect) const;

    // Rebuilds the projection from the frame.
    void updateUniforms();
    // The projection the renderer binds; safe to read from the render thread.
    Matrix uniforms() const;

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;
    size_t hash() const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKCamera>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;

private:
    double scale_ = 1.0;
    double minScale_ = 0.25;
    double maxScale_ = 16.0;
    FLKPoint offset_;
    FLKRect frame_;
    FLKRect viewport_{0, 0, kDefaultViewportSize.width, kDefaultViewportSize.height};

    mutable std::mutex uniformsMutex_;
    Matrix uniforms_{};  // written on the main thread, read by the renderer; guarded by uniformsMutex_
};

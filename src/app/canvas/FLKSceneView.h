#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

#include <memory>

#include "core/platform/FLKPoint.h"

class FLKCanvasOverlay;
class FLKContext;
class FLKGPUTexture;
class FLKSceneGLSurface;
class FLKPerformanceSettings;
class FLKRenderer;
class FLKScene;
class FLKSceneViewActionsNotifier;
class FLKTimeline;
struct FLKEvent;

// The canvas: the core's renderer draws the scene through its main camera
// into a texture, which reaches the screen by the canvas's presentation; the
// on-canvas widgets are painted over it. Input becomes the editing layer's
// events, in scene coordinates, handed to the actions notifier. A frame is
// drawn when redraw() asks for one, and at the preview rate while the
// timeline plays or the frame under the play head is still on its way;
// never while paused.
class FLKSceneView : public QWidget {
    Q_OBJECT

public:
    // How frames reach the screen. Through OpenGL a child QOpenGLWidget shows
    // the rendered texture without a copy, but then Qt composes the whole
    // window in GL for every frame; with GL drawn on the processor that and
    // sending the window to the display cost more than the scene itself.
    // Read back, the frame is copied into the widget's raster backing store
    // and only the canvas goes to the display.
    enum class Presentation { openGL, readBack };
    // For canvases made from now on; openGL unless set.
    static void setDefaultPresentation(Presentation presentation);
    static Presentation defaultPresentation();

    explicit FLKSceneView(QWidget* parent = nullptr, Presentation presentation = defaultPresentation());
    ~FLKSceneView() override;

    std::shared_ptr<FLKScene> scene() const { return scene_; }
    // Fits the camera to the new scene and draws it.
    void setScene(std::shared_ptr<FLKScene> scene);
    // Events go nowhere while none is set.
    void setActionsNotifier(FLKSceneViewActionsNotifier* notifier) { notifier_ = notifier; }
    void setOverlay(std::shared_ptr<FLKCanvasOverlay> overlay);
    // While disabled (the welcome screen is up) input reaches no widget.
    bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
    void setUserInteractionEnabled(bool enabled);

    // The scene point under a point of the widget.
    FLKPoint scenePointForWidgetPoint(QPointF point) const;
    QPointF widgetPointForScenePoint(FLKPoint point) const;

    // Draws a frame and the widgets over it at the next repaint: what
    // changed the scene or the widgets calls this, not QWidget::update().
    void redraw();

    // Frames the scene's background in the widget.
    void focusCamera();

    // The timeline whose play head the canvas follows; none by default.
    void setTimeline(std::shared_ptr<FLKTimeline> timeline);
    // A paused canvas draws no frame and shows the last one it drew.
    void setPaused(bool paused);
    bool isPaused() const { return paused_; }
    // Frames per second at which the play head is followed.
    void setPreviewRate(unsigned fps);
    // The performance level's preview rate, samples a pixel and fixed-resolution flag.
    void applyPerformanceSettings(const FLKPerformanceSettings& settings);
    // More than one: edges smoothed by multisampling with that many samples.
    // One: a sample a pixel, edges weighted by the share of the pixel covered.
    unsigned sampleCount() const { return sampleCount_; }
    // Frames drawn at no more than kFixedResolutionPixels, one pixel a
    // point, and scaled to the canvas: the cost stays put on large or dense screens.
    bool isFixedResolution() const { return fixedResolution_; }
    static constexpr int kFixedResolutionPixels = 1280 * 720;
    // The pixel size frames are drawn at, for a canvas of `size` points.
    static QSize frameSizeFor(QSize size, qreal devicePixelRatio, bool fixedResolution);
    const FLKRenderer* renderer() const { return renderer_.get(); }
    // Frames the renderer drew since the canvas was made.
    uint64_t framesDrawn() const { return framesDrawn_; }
    Presentation presentation() const { return glSurface_ ? Presentation::openGL : Presentation::readBack; }
    // The canvas as it is on screen, the widgets included, drawing a frame
    // first unless paused; in device pixels.
    QImage grabFramebuffer();

signals:
    // A frame of the playing timeline is about to be drawn: widgets that
    // follow the play head repaint now, so the window is composed once.
    void playHeadFrameDue();
    // A frame of the canvas went to the window system.
    void framePresented();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    // The touchpad's pinch arrives as a native zoom gesture.
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    friend class FLKSceneGLSurface;
    struct Target;  // the renderer's data source: the shared framebuffer texture
    void deliver(const FLKEvent& event);
    // With the scene point under a point of the widget filled in.
    void deliverAt(FLKEvent event, QPointF widgetPoint);
    // The renderer draws with `context` current; the GL surface hands its
    // own, a read-back canvas makes one.
    void startRenderer(std::shared_ptr<FLKContext> context);
    bool startOwnRenderer();
    void releaseRenderer();
    // Draws a frame unless paused, with the renderer's context current; the
    // texture holding the newest frame of the canvas's frame size, if any.
    FLKGPUTexture* drawFrame();
    QSize framePixelSize() const { return frameSizeFor(size(), devicePixelRatioF(), fixedResolution_); }
    QSize canvasPixelSize() const { return frameSizeFor(size(), devicePixelRatioF(), false); }
    void paintOverlay(QPainter& painter) const;
    void paintReadBack(QPainter& painter);
    void followPlayHead();
    bool isVideoFramePendingAt(double time) const;
    void applySettingsToRenderer();
    void renderFrame(QSize frameSize);

    std::shared_ptr<FLKScene> scene_;
    FLKSceneViewActionsNotifier* notifier_ = nullptr;  // owned by the window's canvas view models
    bool userInteractionEnabled_ = true;
    std::shared_ptr<FLKCanvasOverlay> overlay_;
    std::shared_ptr<FLKTimeline> timeline_;
    QTimer frameTimer_;
    bool paused_ = false;
    unsigned sampleCount_ = 1;
    unsigned videoRenderingMode_ = 1;
    bool fixedResolution_ = false;
    // The play head and video state of the last frame drawn.
    double drawnTime_ = -1;
    bool drawnBeforeVideoFrame_ = false;
    uint64_t framesDrawn_ = 0;
    FLKSceneGLSurface* glSurface_ = nullptr;  // a child filling the canvas; none when read back
    QImage readBackFrame_;                    // the newest frame drawn, when read back
    // The rest is touched only with the renderer's context current, on the main thread.
    std::shared_ptr<FLKContext> context_;
    std::unique_ptr<FLKRenderer> renderer_;
    std::shared_ptr<Target> target_;
    bool targetHoldsFrame_ = false;
};

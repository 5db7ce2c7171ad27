#include "app/canvas/FLKSceneView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

#include "app/canvas/FLKCanvasOverlay.h"
#include "app/canvas/FLKInputEvents.h"
#include "core/gpu/FLKContext.h"
#include "core/platform/FLKPerformanceSettings.h"
#include "core/model/FLKSceneModifier.h"
#include "core/render/FLKRenderer.h"
#include "core/scene/FLKCamera.h"
#include "core/scene/FLKScene.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "editing/FLKSceneViewActionsNotifier.h"

struct FLKSceneView::Target : FLKRendererDataSource {
    std::shared_ptr<FLKGPUTexture> texture;
    FLKSize drawableSize;

    std::shared_ptr<FLKGPUTexture> textureForRenderer(FLKRenderer&) override { return texture; }
    FLKSize drawableSizeForRenderer(FLKRenderer&) override { return drawableSize; }
};

FLKSceneView::FLKSceneView(QWidget* parent) : QOpenGLWidget(parent), target_(std::make_shared<Target>()) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    // Opaque: where the scene leaves the frame transparent the canvas is
    // dark, not the window's background composed through it.
    setTextureFormat(GL_RGB8);
    frameTimer_.setTimerType(Qt::PreciseTimer);
    connect(&frameTimer_, &QTimer::timeout, this, &FLKSceneView::followPlayHead);
    applyPerformanceSettings(FLKPerformanceSettings::globalSettings());
}

FLKSceneView::~FLKSceneView() {
    // QOpenGLWidget's own destructor destroys the context: this view is gone by then.
    disconnect(contextDestruction_);
    if (!renderer_) return;  // never shown, or its context already went
    makeCurrent();
    releaseGL();
    doneCurrent();
}

void FLKSceneView::releaseGL() {
    FLKContext::Scope scope(*context_);
    renderer_.reset();
    target_->texture.reset();
    targetHoldsFrame_ = false;
    if (readFramebuffer_) glDeleteFramebuffers(1, &readFramebuffer_);
    readFramebuffer_ = 0;
}

void FLKSceneView::setScene(std::shared_ptr<FLKScene> scene) {
    scene_ = std::move(scene);
    if (renderer_) renderer_->setScene(scene_);
    focusCamera();
    update();
}

void FLKSceneView::setOverlay(std::shared_ptr<FLKCanvasOverlay> overlay) {
    overlay_ = std::move(overlay);
    update();
}

void FLKSceneView::focusCamera() {
    if (!scene_ || !scene_->mainCamera()) return;
    scene_->mainCamera()->setViewportSize({static_cast<double>(width()), static_cast<double>(height())}, true);
    FLKSceneModifier(scene_, nullptr, nullptr).focusCamera();
}

void FLKSceneView::setTimeline(std::shared_ptr<FLKTimeline> timeline) {
    timeline_ = std::move(timeline);
    drawnTime_ = -1;
    update();
}

void FLKSceneView::setPaused(bool paused) {
    if (paused_ == paused) return;
    paused_ = paused;
    if (paused_) {
        frameTimer_.stop();
    } else {
        frameTimer_.start();
        update();
    }
}

void FLKSceneView::setPreviewRate(unsigned fps) {
    frameTimer_.setInterval(static_cast<int>(1000 / std::max(1u, fps)));
    if (!paused_) frameTimer_.start();
}

void FLKSceneView::applyPerformanceSettings(const FLKPerformanceSettings& settings) {
    setPreviewRate(settings.fps());
    const unsigned samples = std::max(1u, settings.msaaSampleCount());
    const unsigned videoMode = settings.videoRenderingSettings();
    if (samples == sampleCount_ && settings.fixedResolution() == fixedResolution_ && videoMode == videoRenderingMode_)
        return;
    sampleCount_ = samples;
    fixedResolution_ = settings.fixedResolution();
    videoRenderingMode_ = videoMode;
    applySettingsToRenderer();
    update();
}

void FLKSceneView::applySettingsToRenderer() {
    if (!renderer_) return;
    context_->setVideoRenderingMode(videoRenderingMode_);
    renderer_->setAntialiasing(sampleCount_ > 1 ? FLKRenderer::Antialiasing::multisample
                                                : FLKRenderer::Antialiasing::analyticCoverage);
    // Frames analytic coverage cannot draw are drawn with one sample too.
    renderer_->setMultisampleCount(static_cast<int>(sampleCount_));
}

QSize FLKSceneView::frameSizeFor(QSize size, qreal devicePixelRatio, bool fixedResolution) {
    if (!fixedResolution) {
        return {static_cast<int>(size.width() * devicePixelRatio), static_cast<int>(size.height() * devicePixelRatio)};
    }
    const double pixels = static_cast<double>(size.width()) * size.height();
    const double scale = pixels > kFixedResolutionPixels ? std::sqrt(kFixedResolutionPixels / pixels) : 1.0;
    return {std::max(1, static_cast<int>(size.width() * scale)), std::max(1, static_cast<int>(size.height() * scale))};
}

void FLKSceneView::followPlayHead() {
    if (!timeline_ || !isVisible()) return;
    if (timeline_->isPlaying() || timeline_->currentTime() != drawnTime_) {
        if (timeline_->isPlaying()) emit playHeadFrameDue();
        return update();
    }
    // A still play head whose frame was not decoded yet (the timeline also
    // stops itself while it waits): drawing again before the frame is there
    // would only take the processor from the decoder.
    if (drawnBeforeVideoFrame_ && !isVideoFramePendingAt(drawnTime_)) update();
}

bool FLKSceneView::isVideoFramePendingAt(double time) const {
    const auto tracks = timeline_->tracks();
    auto track = tracks.empty() ? nullptr : std::dynamic_pointer_cast<FLKTimelineVideoTrack>(tracks.front());
    return track && track->expectsTextureAtTime(time) && !track->hasTextureAtTime(time);
}

FLKPoint FLKSceneView::scenePointForWidgetPoint(QPointF point) const {
    if (!scene_ || !scene_->mainCamera()) return {point.x(), point.y()};
    return scene_->mainCamera()->scenePointForScreenPoint({point.x(), point.y()});
}

QPointF FLKSceneView::widgetPointForScenePoint(FLKPoint point) const {
    if (!scene_ || !scene_->mainCamera()) return {point.x, point.y};
    const FLKPoint p = scene_->mainCamera()->screenPointFromScenePoint(point);
    return {p.x, p.y};
}

void FLKSceneView::initializeGL() {
    initializeOpenGLFunctions();
    // The renderer's Scope makes the widget's context current again through
    // Qt, which also binds the widget's framebuffer; leaving it current
    // afterwards is what Qt expects during paintGL.
    context_ = FLKContext::adoptCurrentContext({static_cast<double>(width()), static_cast<double>(height())},
                                               [this] {
                                                   makeCurrent();
                                                   return true;
                                               },
                                               [] {});
    renderer_ = std::make_unique<FLKRenderer>(context_);
    renderer_->setDataSource(target_);
    renderer_->setScene(scene_);
    applySettingsToRenderer();
    glGenFramebuffers(1, &readFramebuffer_);
    // The context goes away before the widget when it is reparented or closed.
    contextDestruction_ = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGL();
        doneCurrent();
    });
}

void FLKSceneView::resizeGL(int w, int h) {
    context_->setSize({static_cast<double>(w), static_cast<double>(h)});
    focusCamera();
}

void FLKSceneView::paintGL() {
    // Textures made and released here belong to the core's share group: it
    // must know this context is current.
    FLKContext::Scope scope(*context_);
    const QSize pixelSize = frameSizeFor(size(), devicePixelRatioF(), false);
    const QSize frameSize = frameSizeFor(size(), devicePixelRatioF(), fixedResolution_);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    if (!paused_) renderFrame(frameSize);
    presentFrame(frameSize, pixelSize);
    if (overlay_) {
        QPainter painter(this);
        overlay_->paint(painter, *this);
    }
}

void FLKSceneView::renderFrame(QSize frameSize) {
    const int pixelWidth = frameSize.width(), pixelHeight = frameSize.height();
    if (!target_->texture || target_->texture->width() != pixelWidth || target_->texture->height() != pixelHeight) {
        target_->texture = FLKGPUTexture::renderTarget(pixelWidth, pixelHeight, FLKPixelFormat::BGRA8);
        renderer_->clearMultisampleTexture();
        targetHoldsFrame_ = false;
    }
    target_->drawableSize = {static_cast<double>(width()), static_cast<double>(height())};
    if (!scene_ || !target_->texture) return;
    // Read before drawing: a frame that arrives meanwhile gets a frame of its own.
    const double time = timeline_ ? timeline_->currentTime() : 0;
    const bool videoPending = timeline_ && isVideoFramePendingAt(time);
    if (!renderer_->render()) return;
    targetHoldsFrame_ = true;
    drawnTime_ = time;
    drawnBeforeVideoFrame_ = videoPending;
    ++framesDrawn_;
}

void FLKSceneView::presentFrame(QSize frameSize, QSize pixelSize) {
    if (!targetHoldsFrame_ || target_->texture->width() != frameSize.width() ||
        target_->texture->height() != frameSize.height())
        return;
    // The frame's rows run top first; the widget's framebuffer is bottom-up.
    glBindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer_);
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target_->texture->name(), 0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, defaultFramebufferObject());
    glBlitFramebuffer(0, 0, frameSize.width(), frameSize.height(), 0, pixelSize.height(), pixelSize.width(), 0,
                      GL_COLOR_BUFFER_BIT, frameSize == pixelSize ? GL_NEAREST : GL_LINEAR);
    glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
}

void FLKSceneView::setUserInteractionEnabled(bool enabled) {
    if (userInteractionEnabled_ == enabled) return;
    userInteractionEnabled_ = enabled;
    // Whatever the pointer hovered before is stale either way.
    if (notifier_) notifier_->canvasViewDidReceiveEvent(nullptr, FLKEvent::mouseEvent(FLKEventType::mouseExited, {}));
    update();
}

void FLKSceneView::deliver(const FLKEvent& event) {
    if (!notifier_ || !userInteractionEnabled_) return;
    notifier_->canvasViewDidReceiveEvent(nullptr, event);
    // Any gesture may have changed the model or the widgets.
    update();
}

void FLKSceneView::deliverAt(FLKEvent event, QPointF widgetPoint) {
    event.sceneLocation = scenePointForWidgetPoint(widgetPoint);
    deliver(event);
}

void FLKSceneView::mousePressEvent(QMouseEvent* event) {
    const FLKPoint location = scenePointForWidgetPoint(event->position());
    const uint64_t flags = flk::modifierFlags(event->modifiers());
    // The widgets pick the handle under the pointer when it moves; a press
    // with no move before it (the first click into the window) must find it too.
    deliver(FLKEvent::mouseEvent(FLKEventType::mouseMoved, location, flags));
    deliver(FLKEvent::mouseEvent(FLKEventType::mouseDown, location, flags));
}

void FLKSceneView::mouseMoveEvent(QMouseEvent* event) {
    deliver(FLKEvent::mouseEvent(flk::moveEventType(event->buttons()), scenePointForWidgetPoint(event->position()),
                                 flk::modifierFlags(event->modifiers())));
}

void FLKSceneView::mouseReleaseEvent(QMouseEvent* event) {
    deliver(FLKEvent::mouseEvent(FLKEventType::mouseUp, scenePointForWidgetPoint(event->position()),
                                 flk::modifierFlags(event->modifiers())));
}

void FLKSceneView::enterEvent(QEnterEvent* event) {
    deliver(FLKEvent::mouseEvent(FLKEventType::mouseEntered, scenePointForWidgetPoint(event->position()),
                                 flk::modifierFlags(event->modifiers())));
    QOpenGLWidget::enterEvent(event);
}

void FLKSceneView::leaveEvent(QEvent* event) {
    deliverAt(FLKEvent::mouseEvent(FLKEventType::mouseExited, {}), mapFromGlobal(QCursor::pos()));
    QOpenGLWidget::leaveEvent(event);
}

void FLKSceneView::wheelEvent(QWheelEvent* event) {
    deliverAt(flk::scrollWheelEvent(*event), event->position());
    event->accept();
}

bool FLKSceneView::event(QEvent* event) {
    // Keys the canvas's widgets take (Delete, the arrows) reach them before
    // any menu shortcut bound to the same key.
    if (event->type() == QEvent::ShortcutOverride &&
        flk::canvasKeyEvent(*static_cast<QKeyEvent*>(event), FLKEventType::keyDown)) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::NativeGesture) {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (auto magnify = flk::magnifyEvent(*gesture)) {
            deliverAt(*magnify, gesture->position());
            return true;
        }
    }
    return QOpenGLWidget::event(event);
}

void FLKSceneView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        if (notifier_ && userInteractionEnabled_) notifier_->canvasViewDidReceiveCancelOperation(nullptr);
        update();
        return;
    }
    if (auto keyEvent = flk::canvasKeyEvent(*event, FLKEventType::keyDown)) {
        deliverAt(*keyEvent, mapFromGlobal(QCursor::pos()));
        return;
    }
    QOpenGLWidget::keyPressEvent(event);
}

void FLKSceneView::keyReleaseEvent(QKeyEvent* event) {
    if (auto keyEvent = flk::canvasKeyEvent(*event, FLKEventType::keyUp)) {
        deliverAt(*keyEvent, mapFromGlobal(QCursor::pos()));
        return;
    }
    QOpenGLWidget::keyReleaseEvent(event);
}

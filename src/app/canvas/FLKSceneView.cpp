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
#include "app/canvas/FLKSceneGLSurface.h"
#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUTexture.h"
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

namespace {
FLKSceneView::Presentation gDefaultPresentation = FLKSceneView::Presentation::openGL;
}

void FLKSceneView::setDefaultPresentation(Presentation presentation) { gDefaultPresentation = presentation; }

FLKSceneView::Presentation FLKSceneView::defaultPresentation() { return gDefaultPresentation; }

FLKSceneView::FLKSceneView(QWidget* parent, Presentation presentation)
    : QWidget(parent), target_(std::make_shared<Target>()) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    if (presentation == Presentation::openGL) {
        glSurface_ = new FLKSceneGLSurface(*this);
    } else {
        // Every pixel is painted: Qt need not clear the backing store first.
        setAttribute(Qt::WA_OpaquePaintEvent);
    }
    frameTimer_.setTimerType(Qt::PreciseTimer);
    connect(&frameTimer_, &QTimer::timeout, this, &FLKSceneView::followPlayHead);
    applyPerformanceSettings(FLKPerformanceSettings::globalSettings());
}

FLKSceneView::~FLKSceneView() {
    // The GL surface releases the renderer with its context.
    delete glSurface_;
    releaseRenderer();
}

void FLKSceneView::startRenderer(std::shared_ptr<FLKContext> context) {
    context_ = std::move(context);
    FLKContext::Scope scope(*context_);
    renderer_ = std::make_unique<FLKRenderer>(context_);
    renderer_->setDataSource(target_);
    renderer_->setScene(scene_);
    applySettingsToRenderer();
}

bool FLKSceneView::startOwnRenderer() {
    if (renderer_) return true;
    auto context = FLKContext::contextWithSize({static_cast<double>(width()), static_cast<double>(height())});
    if (!context || !context->isValid()) return false;
    startRenderer(std::move(context));
    return true;
}

void FLKSceneView::releaseRenderer() {
    if (!renderer_) return;
    FLKContext::Scope scope(*context_);
    renderer_.reset();
    target_->texture.reset();
    targetHoldsFrame_ = false;
}

void FLKSceneView::setScene(std::shared_ptr<FLKScene> scene) {
    scene_ = std::move(scene);
    if (renderer_) renderer_->setScene(scene_);
    focusCamera();
    redraw();
}

void FLKSceneView::redraw() {
    // A parent's update() leaves an opaque GL child as it is.
    if (glSurface_) glSurface_->update();
    else update();
}

void FLKSceneView::setOverlay(std::shared_ptr<FLKCanvasOverlay> overlay) {
    overlay_ = std::move(overlay);
    redraw();
}

void FLKSceneView::focusCamera() {
    if (!scene_ || !scene_->mainCamera()) return;
    scene_->mainCamera()->setViewportSize({static_cast<double>(width()), static_cast<double>(height())}, true);
    FLKSceneModifier(scene_, nullptr, nullptr).focusCamera();
}

void FLKSceneView::setTimeline(std::shared_ptr<FLKTimeline> timeline) {
    timeline_ = std::move(timeline);
    drawnTime_ = -1;
    redraw();
}

void FLKSceneView::setPaused(bool paused) {
    if (paused_ == paused) return;
    paused_ = paused;
    if (paused_) {
        frameTimer_.stop();
    } else {
        frameTimer_.start();
        redraw();
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
    redraw();
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
        return redraw();
    }
    // A still play head whose frame was not decoded yet (the timeline also
    // stops itself while it waits): drawing again before the frame is there
    // would only take the processor from the decoder.
    if (drawnBeforeVideoFrame_ && !isVideoFramePendingAt(drawnTime_)) redraw();
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

void FLKSceneView::resizeEvent(QResizeEvent* event) {
    if (glSurface_) glSurface_->resize(size());
    if (context_) context_->setSize({static_cast<double>(width()), static_cast<double>(height())});
    focusCamera();
    QWidget::resizeEvent(event);
}

FLKGPUTexture* FLKSceneView::drawFrame() {
    if (!renderer_) return nullptr;
    // Textures made and released here belong to the core's share group: it
    // must know the renderer's context is current.
    FLKContext::Scope scope(*context_);
    const QSize frameSize = framePixelSize();
    if (!paused_) renderFrame(frameSize);
    FLKGPUTexture* frame = target_->texture.get();
    const bool current = targetHoldsFrame_ && frame && frame->width() == frameSize.width() &&
                         frame->height() == frameSize.height();
    return current ? frame : nullptr;
}

void FLKSceneView::paintOverlay(QPainter& painter) const {
    if (overlay_) overlay_->paint(painter, *this);
}

void FLKSceneView::paintEvent(QPaintEvent*) {
    if (glSurface_) return;  // the surface paints the whole canvas
    QPainter painter(this);
    paintReadBack(painter);
    emit framePresented();
}

void FLKSceneView::paintReadBack(QPainter& painter) {
    if (!paused_ && startOwnRenderer()) {
        if (FLKGPUTexture* frame = drawFrame()) {
            FLKContext::Scope scope(*context_);
            const QSize frameSize(frame->width(), frame->height());
            // BGRA bytes, top row first: QImage's 32-bit layout on this byte order.
            if (readBackFrame_.size() != frameSize) readBackFrame_ = QImage(frameSize, QImage::Format_RGB32);
            if (!frame->readPixels(readBackFrame_.bits(), static_cast<size_t>(readBackFrame_.sizeInBytes())))
                readBackFrame_ = QImage();
        }
    }
    if (readBackFrame_.isNull() || readBackFrame_.size() != framePixelSize()) {
        painter.fillRect(rect(), Qt::black);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform, readBackFrame_.size() != canvasPixelSize());
        painter.drawImage(QRectF(rect()), readBackFrame_);
    }
    paintOverlay(painter);
}

QImage FLKSceneView::grabFramebuffer() {
    if (glSurface_) return glSurface_->grabFramebuffer();
    QImage image(canvasPixelSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&image);
    paintReadBack(painter);
    return image;
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
    const double time = timeline_ ? timeline_->currentTime() : 0;
    const bool videoPending = timeline_ && isVideoFramePendingAt(time);
    if (!renderer_->render()) return;
    targetHoldsFrame_ = true;
    drawnTime_ = time;
    drawnBeforeVideoFrame_ = videoPending;
    ++framesDrawn_;
}

void FLKSceneView::setUserInteractionEnabled(bool enabled) {
    if (userInteractionEnabled_ == enabled) return;
    userInteractionEnabled_ = enabled;
    // Whatever the pointer hovered before is stale either way.
    if (notifier_) notifier_->canvasViewDidReceiveEvent(nullptr, FLKEvent::mouseEvent(FLKEventType::mouseExited, {}));
    redraw();
}

void FLKSceneView::deliver(const FLKEvent& event) {
    if (!notifier_ || !userInteractionEnabled_) return;
    notifier_->canvasViewDidReceiveEvent(nullptr, event);
    // Any gesture may have changed the model or the widgets.
    redraw();
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
    QWidget::enterEvent(event);
}

void FLKSceneView::leaveEvent(QEvent* event) {
    deliverAt(FLKEvent::mouseEvent(FLKEventType::mouseExited, {}), mapFromGlobal(QCursor::pos()));
    QWidget::leaveEvent(event);
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
    return QWidget::event(event);
}

void FLKSceneView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        if (notifier_ && userInteractionEnabled_) notifier_->canvasViewDidReceiveCancelOperation(nullptr);
        redraw();
        return;
    }
    if (auto keyEvent = flk::canvasKeyEvent(*event, FLKEventType::keyDown)) {
        deliverAt(*keyEvent, mapFromGlobal(QCursor::pos()));
        return;
    }
    QWidget::keyPressEvent(event);
}

void FLKSceneView::keyReleaseEvent(QKeyEvent* event) {
    if (auto keyEvent = flk::canvasKeyEvent(*event, FLKEventType::keyUp)) {
        deliverAt(*keyEvent, mapFromGlobal(QCursor::pos()));
        return;
    }
    QWidget::keyReleaseEvent(event);
}

#include "core/render/FLKOffScreenRenderer.h"

#include <chrono>
#include <cmath>

#include "core/platform/FLKLog.h"
#include "core/platform/FLKThreadReaper.h"
#include "core/render/FLKFixedFrameTimeSource.h"

std::shared_ptr<FLKOffScreenRenderer> FLKOffScreenRenderer::offScreenRendererWithScene(const FLKScene& scene,
                                                                                       const FLKRect& renderFrame,
                                                                                       unsigned fps, unsigned numFrames,
                                                                                       FLKSize outputSize) {
    auto context = FLKContext::contextWithSize({720, 720});
    if (!context->isValid()) {
        flk::log("Off-screen rendering is not possible: %s", context->errorDescription().c_str());
        return nullptr;
    }
    if (outputSize.width <= 0 || outputSize.height <= 0) outputSize = renderFrame.size;
    auto renderer = std::make_shared<FLKOffScreenRenderer>(Passkey{}, std::move(context), scene, renderFrame, fps,
                                                           numFrames, outputSize);
    renderer->setDataSource(renderer);
    return renderer;
}

FLKOffScreenRenderer::FLKOffScreenRenderer(Passkey, std::shared_ptr<FLKContext> context, const FLKScene& scene,
                                           const FLKRect& renderFrame, unsigned fps, unsigned numFrames,
                                           FLKSize outputSize)
    : FLKRenderer(std::move(context), 1),
      renderFrame_(renderFrame),
      fps_(fps),
      numFrames_(numFrames),
      outputSize_(outputSize),
      scene_(std::static_pointer_cast<FLKScene>(scene.copy())),
      clock_(std::make_shared<FLKFrameByFrameClock>(fps, numFrames)),
      timeSource_(std::make_shared<FLKFixedFrameTimeSource>()) {
    // The copy shares the editor's camera; the export looks through its own.
    auto camera = FLKCamera::cameraWithFrame(renderFrame);
    camera->setViewportSize(renderFrame.size, true);
    scene_->setMainCamera(camera);
    setScene(scene_);
}

FLKOffScreenRenderer::~FLKOffScreenRenderer() {
    cancel();
    if (renderThread_.joinable()) {
        if (renderThread_.get_id() == std::this_thread::get_id()) {
            flk::joinLater(std::move(renderThread_));
        } else {
            renderThread_.join();
        }
    }
}

void FLKOffScreenRenderer::setTimeSource(std::shared_ptr<FLKTimeUpdatable> source) {
    timeSource_ = std::move(source);
}

void FLKOffScreenRenderer::renderAllFrames() {
    if (renderThread_.joinable()) return;
    prepareForOffScreenRendering();
    renderThread_ = std::thread([this] { renderLoop(); });
}

std::shared_ptr<FLKOffScreenRenderer> FLKOffScreenRenderer::offScreenRendererWithScene(const FLKScene& scene,
                                                                                       const FLKTimeline& timeline,
                                                                                       const FLKRect& renderFrame,
                                                                                       unsigned fps,
                                                                                       FLKSize outputSize) {
    auto renderer = offScreenRendererWithScene(scene, renderFrame, fps,
                                               static_cast<unsigned>(FLKFrameByFrameClock::numFramesForDuration(timeline.duration(), fps)), outputSize);
    if (!renderer) return nullptr;
    renderer->timeline_ = timeline.copyWithTimer(renderer->clock_);
    renderer->timeline_->setName("Offscreen Master");
    renderer->timeSource_ = renderer->timeline_;
    return renderer;
}

void FLKOffScreenRenderer::prepareForOffScreenRendering() {
    if (timeline_) {
        // play() registers the timeline with the frame-by-frame clock.
        timeline_->mapScene(scene_);
        timeline_->play();
    } else if (timeSource_) {
        clock_->addUpdatable(timeSource_);
    }
}

void FLKOffScreenRenderer::renderLoop() {
    {
        FLKContext::Scope scope(*context());
        if (!scope.isCurrent()) {
            flk::log("Off-screen rendering could not make its context current");
        } else {
            texture_ = FLKGPUTexture::renderTarget(static_cast<int>(std::lround(outputSize_.width)),
                                                   static_cast<int>(std::lround(outputSize_.height)),
                                                   FLKPixelFormat::BGRA8);
            readBack_ = std::make_unique<FLKPixelReadBack>(pipelinedReadBack_);
            while (!cancelled_.load() && !clock_->isFinished() && clock_->currentFrame() < numFrames_) {
                if (clock_->tick()) {
                    render();
                } else {
                    // The time source is not ready (media still loading): ask again shortly.
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
            }
            readBack_->flush([this](const FLKPixelBuffer& buffer) { deliver(buffer); });
            readBack_->releaseBuffers();
            texture_.reset();
        }
    }
    finishOffScreenRendering();
}

void FLKOffScreenRenderer::finishRenderingOnCommandBuffer(FLKGPUTexture& texture) {
    readBack_->readTexture(texture.name(), texture.width(), texture.height(),
                           [this](const FLKPixelBuffer& buffer) { deliver(buffer); });
}

void FLKOffScreenRenderer::deliver(const FLKPixelBuffer& buffer) {
    if (auto output = renderOutput_.lock()) output->didRenderToBuffer(*this, buffer);
}

void FLKOffScreenRenderer::finishOffScreenRendering() {
    if (auto output = renderOutput_.lock()) output->didFinishRenderingOffScreen(*this);
    std::lock_guard lock(finishedMutex_);
    finished_ = true;
    finishedCondition_.notify_all();
}

void FLKOffScreenRenderer::waitUntilFinished() {
    std::unique_lock lock(finishedMutex_);
    finishedCondition_.wait(lock, [this] { return finished_ || !renderThread_.joinable(); });
}

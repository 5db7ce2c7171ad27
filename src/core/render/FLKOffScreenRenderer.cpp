#include "core/render/FLKOffScreenRenderer.h"

#include <chrono>
#include <cmath>
#include <string>

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
    std::lock_guard lock(finishedMutex_);
    progressSignal_ = timeSource_ ? timeSource_->progressSignal() : nullptr;
}

void FLKOffScreenRenderer::cancel() {
    cancelled_.store(true);
    std::shared_ptr<FLKProgressSignal> signal;
    {
        std::lock_guard lock(finishedMutex_);
        signal = progressSignal_;
    }
    if (signal) signal->notify();
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
    renderer->timeline_->setPlaysThrough();
    renderer->setTimeSource(renderer->timeline_);
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

namespace {
FLKError renderError(long code, const std::string& reason) {
    return FLKError::make(FLKOffScreenRenderer::kErrorDomain, code, "The frames could not be rendered.", reason);
}
}  // namespace

void FLKOffScreenRenderer::renderLoop() { finishOffScreenRendering(renderFrames()); }

std::optional<FLKError> FLKOffScreenRenderer::renderFrames() {
    FLKContext::Scope scope(*context());
    if (!scope.isCurrent()) {
        return renderError(kContextUnusable, "The OpenGL context could not be made current on the render thread.");
    }
    const int width = static_cast<int>(std::lround(outputSize_.width));
    const int height = static_cast<int>(std::lround(outputSize_.height));
    texture_ = FLKGPUTexture::renderTarget(width, height, FLKPixelFormat::BGRA8);
    if (!texture_) {
        return renderError(kNoFramebuffer, "No " + std::to_string(width) + " x " + std::to_string(height) +
                                               " frame could be made on the GPU.");
    }
    std::optional<FLKError> failure;
    auto output = renderOutput_.lock();
    if (pipelinedReadBack_ && output && output->takesLentPixels()) {
        lendingReadBack_ = std::make_unique<FLKLendingReadBack>();
    } else {
        readBack_ = std::make_unique<FLKPixelReadBack>(pipelinedReadBack_);
    }
    output.reset();
    std::shared_ptr<FLKProgressSignal> signal;
    {
        std::lock_guard lock(finishedMutex_);
        signal = progressSignal_;
    }
    // Mesa's rasteriser draws on threads of its own, named after it.
    FLKStageTimes::HelperThreads rasterThreads;
    rasterThreads.beginNamed("llvmpipe");
    while (!cancelled_.load() && !clock_->isFinished() && clock_->currentFrame() < numFrames_) {
        // Read before asking: a frame that arrives after the refusal is not missed.
        const std::uint64_t seen = signal ? signal->count() : 0;
        bool ticked = false;
        {
            FLKStageTimes::CpuScope rendering(FLKStageTimes::kRender);
            ticked = clock_->tick();
            if (ticked && !render()) {
                failure = renderError(kFrameNotDrawn, "Frame " + std::to_string(clock_->currentFrame()) + " of " +
                                                          std::to_string(numFrames_) + " could not be drawn.");
                break;
            }
        }
        if (ticked) continue;
        // The time source is not ready (media still loading): wait until its decoders make progress.
        FLKStageTimes::WaitScope waiting(FLKStageTimes::kRender, FLKStageTimes::WaitScope::On::input);
        if (signal) {
            signal->waitPast(seen);
        } else {
            // A source that is not told of its progress (a timeline the editor
            // plays, resumed by its readiness poll) can only be asked again.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    FLKStageTimes::shared().addCpu(FLKStageTimes::kRender, rasterThreads.cpuNs());
    // After a failure the frames still queued would only extend an incomplete run.
    FLKStageTimes::CpuScope readingBack(FLKStageTimes::kReadBack);
    if (lendingReadBack_) {
        lendingReadBack_->flush([this, &failure](FLKLentPixels pixels) {
            if (!failure) lend(std::move(pixels));
        });
        // Waits for the frames still lent to the output: it lets go of them as it converts them.
        lendingReadBack_->releaseBuffers();
    } else {
        readBack_->flush([this, &failure](const FLKPixelBuffer& buffer) {
            if (!failure) deliver(buffer);
        });
        readBack_->releaseBuffers();
    }
    texture_.reset();
    return failure;
}

void FLKOffScreenRenderer::finishRenderingOnCommandBuffer(FLKGPUTexture& texture) {
    FLKStageTimes::CpuScope readingBack(FLKStageTimes::kReadBack);
    if (lendingReadBack_) {
        lendingReadBack_->readTexture(texture.name(), texture.width(), texture.height(),
                                      [this](FLKLentPixels pixels) { lend(std::move(pixels)); });
        return;
    }
    readBack_->readTexture(texture.name(), texture.width(), texture.height(),
                           [this](const FLKPixelBuffer& buffer) { deliver(buffer); });
}

void FLKOffScreenRenderer::lend(FLKLentPixels pixels) {
    if (auto output = renderOutput_.lock()) output->didRenderToLentPixels(*this, std::move(pixels));
}

void FLKOffScreenRenderer::deliver(const FLKPixelBuffer& buffer) {
    if (auto output = renderOutput_.lock()) output->didRenderToBuffer(*this, buffer);
}

void FLKOffScreenRenderer::finishOffScreenRendering(const std::optional<FLKError>& failure) {
    if (failure) {
        flk::log("Off-screen rendering failed: %s", failure->fullMessage().c_str());
        std::lock_guard lock(finishedMutex_);
        failure_ = failure;
    }
    if (auto output = renderOutput_.lock()) {
        if (failure) {
            output->didFailRenderingOffScreen(*this, *failure);
        } else {
            output->didFinishRenderingOffScreen(*this);
        }
    }
    std::lock_guard lock(finishedMutex_);
    finished_ = true;
    finishedCondition_.notify_all();
}

std::optional<FLKError> FLKOffScreenRenderer::failure() const {
    std::lock_guard lock(finishedMutex_);
    return failure_;
}

void FLKOffScreenRenderer::waitUntilFinished() {
    std::unique_lock lock(finishedMutex_);
    finishedCondition_.wait(lock, [this] { return finished_ || !renderThread_.joinable(); });
}

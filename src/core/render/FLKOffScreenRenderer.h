#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "core/platform/FLKFrameByFrameClock.h"
#include "core/platform/FLKProgressSignal.h"
#include "core/platform/FLKStageTimes.h"
#include "core/platform/FLKRect.h"
#include "core/platform/FLKTimeUpdatable.h"
#include "core/render/FLKLendingReadBack.h"
#include "core/render/FLKPixelReadBack.h"
#include "core/render/FLKRenderOutput.h"
#include "core/render/FLKRenderer.h"
#include "core/timeline/FLKTimeline.h"

// Renders a copy of a scene frame by frame on a render thread of its own,
// which owns a GL context, and hands every frame to its render output as a
// BGRA pixel buffer. A frame-by-frame clock steps a time source (the export's
// timeline; a fixed frame count without one), and a frame is drawn whenever
// the source took the clock's time.
//
// A frame that cannot be drawn (no framebuffer texture, a GL error) ends the
// run: the output is told didFailRenderingOffScreen instead.
//
// Threads: configure (render output, time source, read-back mode) before
// renderAllFrames(); from then on everything runs on the render thread until
// the output is told didFinishRenderingOffScreen or didFailRenderingOffScreen.
class FLKOffScreenRenderer : public FLKRenderer, public FLKRendererDataSource,
                             public std::enable_shared_from_this<FLKOffScreenRenderer> {
    struct Passkey {};

public:
    // `outputSize` is the size of the frames (the framebuffer texture); an
    // empty size takes the render frame's size. Null when no GL context can be made.
    static std::shared_ptr<FLKOffScreenRenderer> offScreenRendererWithScene(const FLKScene& scene,
                                                                            const FLKRect& renderFrame, unsigned fps,
                                                                            unsigned numFrames,
                                                                            FLKSize outputSize = {});
    // Over a copy of `timeline` named "Offscreen Master", driven by the
    // renderer's frame-by-frame clock and mapped onto the copied scene:
    // ceil(fps x duration) frames, frame n showing the timeline at n / fps.
    static std::shared_ptr<FLKOffScreenRenderer> offScreenRendererWithScene(const FLKScene& scene,
                                                                            const FLKTimeline& timeline,
                                                                            const FLKRect& renderFrame, unsigned fps,
                                                                            FLKSize outputSize = {});
    FLKOffScreenRenderer(Passkey, std::shared_ptr<FLKContext> context, const FLKScene& scene,
                         const FLKRect& renderFrame, unsigned fps, unsigned numFrames, FLKSize outputSize);
    ~FLKOffScreenRenderer() override;

    const FLKRect& renderFrame() const { return renderFrame_; }
    unsigned fps() const { return fps_; }
    unsigned numFrames() const { return numFrames_; }
    FLKSize outputSize() const { return outputSize_; }
    // The copied scene, seen through the renderer's own camera.
    const std::shared_ptr<FLKScene>& renderedScene() const { return scene_; }
    const std::shared_ptr<FLKFrameByFrameClock>& clock() const { return clock_; }
    // The timeline copy being played; null for a fixed frame count.
    const std::shared_ptr<FLKTimeline>& timeline() const { return timeline_; }

    void setRenderOutput(std::weak_ptr<FLKRenderOutput> output) { renderOutput_ = std::move(output); }
    // What the clock drives (the export's timeline copy); a fixed frame source by default.
    void setTimeSource(std::shared_ptr<FLKTimeUpdatable> source);
    // Overlapped read-back (default on): a frame reaches the output once the
    // next one is queued; an output that takes lent frames gets them without a copy.
    void setPipelinedReadBack(bool pipelined) { pipelinedReadBack_ = pipelined; }

    // Starts the run on the render thread and returns at once.
    void renderAllFrames();
    // Asks a running loop to stop after the current frame.
    void cancel();
    // Blocks until the output was told the run finished. Not from the render thread.
    void waitUntilFinished();
    // Why the run ended early, once it has finished.
    std::optional<FLKError> failure() const;

    static constexpr const char* kErrorDomain = "FLKOffScreenRendererErrorDomain";
    enum ErrorCode : long { kContextUnusable = 1, kNoFramebuffer = 2, kFrameNotDrawn = 3 };

    // FLKRendererDataSource: its own framebuffer texture and its context's size.
    std::shared_ptr<FLKGPUTexture> textureForRenderer(FLKRenderer&) override { return texture_; }
    FLKSize drawableSizeForRenderer(FLKRenderer&) override { return context()->size(); }

protected:
    void finishRenderingOnCommandBuffer(FLKGPUTexture& texture) override;

private:
    void prepareForOffScreenRendering();
    void renderLoop();
    // Answers why the frames could not all be drawn, or nothing.
    std::optional<FLKError> renderFrames();
    void finishOffScreenRendering(const std::optional<FLKError>& failure);
    void deliver(const FLKPixelBuffer& buffer);
    void lend(FLKLentPixels pixels);

    const FLKRect renderFrame_;
    const unsigned fps_;
    const unsigned numFrames_;
    const FLKSize outputSize_;
    const std::shared_ptr<FLKScene> scene_;
    const std::shared_ptr<FLKFrameByFrameClock> clock_;

    // Set before renderAllFrames(), read on the render thread afterwards.
    std::weak_ptr<FLKRenderOutput> renderOutput_;
    std::shared_ptr<FLKTimeUpdatable> timeSource_;
    std::shared_ptr<FLKTimeline> timeline_;
    bool pipelinedReadBack_ = true;

    // Render thread only.
    std::shared_ptr<FLKGPUTexture> texture_;
    std::unique_ptr<FLKPixelReadBack> readBack_;
    std::unique_ptr<FLKLendingReadBack> lendingReadBack_;  // instead, for an output that takes lent frames

    std::atomic<bool> cancelled_{false};
    std::thread renderThread_;  // started once by renderAllFrames(), joined by the destructor
    mutable std::mutex finishedMutex_;
    std::condition_variable finishedCondition_;
    bool finished_ = false;            // guarded by finishedMutex_
    std::optional<FLKError> failure_;  // guarded by finishedMutex_
    // What the render thread waits on while the time source refuses a time; a cancel notifies it too.
    std::shared_ptr<FLKProgressSignal> progressSignal_;  // guarded by finishedMutex_
};

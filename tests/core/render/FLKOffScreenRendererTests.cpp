#include <gtest/gtest.h>

#include <mutex>
#include <optional>

#include "FLKRenderTestSupport.h"
#include "core/render/FLKOffScreenRenderer.h"

namespace {
class FrameCollector : public FLKRenderOutput {
public:
    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& buffer) override {
        std::lock_guard lock(mutex);
        frames.push_back(buffer);
    }
    bool takesLentPixels() const override { return lends; }
    // Copied and handed back at once, as the encoder does once it has converted the frame.
    void didRenderToLentPixels(FLKRenderer&, FLKLentPixels pixels) override {
        FLKPixelBuffer copy(pixels.width, pixels.height);
        copy.stride = pixels.stride;
        copy.bgra.assign(pixels.bgra, pixels.bgra + size_t(pixels.stride) * pixels.height);
        std::lock_guard lock(mutex);
        frames.push_back(std::move(copy));
    }
    void didFinishRenderingOffScreen(FLKRenderer&) override {
        std::lock_guard lock(mutex);
        finished = true;
    }
    void didFailRenderingOffScreen(FLKRenderer&, const FLKError& error) override {
        std::lock_guard lock(mutex);
        failure = error;
    }
    bool lends = false;  // set before the run
    std::mutex mutex;
    std::vector<FLKPixelBuffer> frames;  // guarded by mutex
    bool finished = false;               // guarded by mutex
    std::optional<FLKError> failure;     // guarded by mutex
};

std::shared_ptr<FrameCollector> renderOffScreen(const FLKScene& scene, const FLKRect& frame, unsigned numFrames,
                                                FLKSize outputSize, bool pipelined, bool lends = false) {
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(scene, frame, 30, numFrames, outputSize);
    if (!renderer) return nullptr;
    auto collector = std::make_shared<FrameCollector>();
    collector->lends = lends;
    renderer->setRenderOutput(collector);
    renderer->setPipelinedReadBack(pipelined);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    return collector;
}

const uint8_t* bgraAt(const FLKPixelBuffer& buffer, int x, int y) {
    return &buffer.bgra[size_t(y) * buffer.stride + size_t(x) * 4];
}

TEST(FLKOffScreenRendererTest, EveryFrameArrivesWithTightRowsAtTheOutputSize) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    // The editor's camera looks elsewhere: the export must use the render frame.
    auto scene = sceneWithCameraFrame({500, 500, 10, 10});
    scene->addChild(gradientSprite({0, 0, 50, 20}, {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}}));
    auto editorCamera = scene->mainCamera();

    // Copied at once, copied once the next frame is queued, lent where read back (more frames than slots).
    std::vector<FLKPixelBuffer> firstFrames;
    for (auto [pipelined, lends] : {std::pair{false, false}, {true, false}, {true, true}}) {
        auto collector = renderOffScreen(*scene, {0, 0, 50, 20}, 6, {101, 37}, pipelined, lends);
        ASSERT_TRUE(collector);
        std::lock_guard lock(collector->mutex);
        EXPECT_TRUE(collector->finished);
        ASSERT_EQ(collector->frames.size(), 6u) << "pipelined " << pipelined << " lent " << lends;
        for (const auto& frame : collector->frames) {
            EXPECT_EQ(frame.width, 101);
            EXPECT_EQ(frame.height, 37);
            EXPECT_EQ(frame.stride, 101 * 4);
            EXPECT_EQ(frame.bgra.size(), size_t(101 * 37 * 4));
        }
        const FLKPixelBuffer& frame = collector->frames.front();
        const uint8_t* topLeft = bgraAt(frame, 0, 0);  // red, in BGRA byte order
        EXPECT_GE(topLeft[2], 220);
        EXPECT_LE(topLeft[0], 35);
        const uint8_t* bottomLeft = bgraAt(frame, 0, 36);  // blue
        EXPECT_GE(bottomLeft[0], 220);
        EXPECT_LE(bottomLeft[2], 35);
        firstFrames.push_back(frame);
    }
    EXPECT_EQ(firstFrames[0].bgra, firstFrames[1].bgra);
    EXPECT_EQ(firstFrames[0].bgra, firstFrames[2].bgra);
    EXPECT_EQ(scene->mainCamera(), editorCamera);
}

// A frame larger than the GPU's textures cannot be made: the run ends at
// once with the reason, rather than the second frame waiting for ever for
// the first one's slot.
TEST(FLKOffScreenRendererTest, AFrameThatCannotBeMadeEndsTheRunWithAnError) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    auto scene = sceneWithCameraFrame({0, 0, 8, 8});
    scene->addChild(gradientSprite({0, 0, 8, 8}, {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}}));
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(*scene, {0, 0, 8, 8}, 30, 3, {40000, 8});
    ASSERT_TRUE(renderer);
    auto collector = std::make_shared<FrameCollector>();
    renderer->setRenderOutput(collector);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    std::lock_guard lock(collector->mutex);
    ASSERT_TRUE(collector->failure);
    EXPECT_EQ(collector->failure->code, FLKOffScreenRenderer::kNoFramebuffer);
    EXPECT_NE(collector->failure->fullMessage().find("40000 x 8"), std::string::npos) << collector->failure->fullMessage();
    EXPECT_FALSE(collector->finished) << "a failed run is not reported as finished";
    EXPECT_TRUE(collector->frames.empty());
    ASSERT_TRUE(renderer->failure());
    EXPECT_EQ(renderer->failure()->code, FLKOffScreenRenderer::kNoFramebuffer);
}

TEST(FLKOffScreenRendererTest, ZeroFramesFinishWithoutOutput) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    auto scene = sceneWithCameraFrame({0, 0, 8, 8});
    auto collector = renderOffScreen(*scene, {0, 0, 8, 8}, 0, {}, true);
    ASSERT_TRUE(collector);
    std::lock_guard lock(collector->mutex);
    EXPECT_TRUE(collector->finished);
    EXPECT_TRUE(collector->frames.empty());
}
}  // namespace

TEST(FLKOffScreenRendererTest, PlaysItsOwnCopyOfTheTimeline) {
    ASSERT_TRUE(FLKContext::isGPUSupported()) << "no OpenGL 4.5";
    auto scene = sceneWithCameraFrame({0, 0, 50, 20});
    auto editorClock = std::make_shared<FLKFrameByFrameClock>(30, 1);
    auto timeline = FLKTimeline::timelineWithTimer(editorClock);
    timeline->createVideoTrack();
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(*scene, *timeline, {0, 0, 50, 20}, 30);
    ASSERT_TRUE(renderer);
    ASSERT_TRUE(renderer->timeline());
    EXPECT_EQ(renderer->timeline()->name(), "Offscreen Master");
    EXPECT_EQ(timeline->name(), "Master");
    EXPECT_NE(renderer->timeline()->identifier(), timeline->identifier());
    EXPECT_EQ(renderer->timeline()->tracks().size(), 1u);
    EXPECT_NE(renderer->timeline()->tracks().front(), timeline->tracks().front());
    EXPECT_EQ(renderer->numFrames(), 0u);  // an empty timeline lasts 0 s
    auto collector = std::make_shared<FrameCollector>();
    renderer->setRenderOutput(collector);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    std::lock_guard lock(collector->mutex);
    EXPECT_TRUE(collector->finished);
    EXPECT_TRUE(collector->frames.empty());
    EXPECT_FALSE(timeline->isPlaying());
}

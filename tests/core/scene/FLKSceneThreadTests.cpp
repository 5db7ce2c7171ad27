#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "core/scene/FLKRealtimeVideoSprite.h"

// A live sprite takes frames on the capture thread while the renderer reads
// its texture and geometry; frames alternate orientation so the drawn plane
// and the cached buffers are replaced all the time.
TEST(FLKSceneThreads, LiveFramesWhileRendering) {
    auto sprite = FLKRealtimeVideoSprite::realtimeVideoSprite();
    sprite->setShape(FLKPlane::planeWithFrame({0, 0, 90, 160}));
    sprite->setRespondsToOrientationChanges(true);
    auto portrait = std::make_shared<FLKPixelBuffer>(4, 8);
    auto landscape = std::make_shared<FLKPixelBuffer>(8, 4);

    constexpr int kFrames = 200;
    std::atomic<bool> done{false};
    std::thread capture([&] {
        for (int i = 0; i < kFrames; ++i) {
            // Presentation times far ahead of the wall clock: none is dropped.
            sprite->recorderDidOutputSampleBuffer({i % 2 ? landscape : portrait, 1000.0 + i});
        }
        done = true;
    });
    int drawn = 0;
    while (!done || drawn == 0) {
        sprite->updateFrame({720, 720});
        auto vertices = sprite->vertexBuffer();
        auto indices = sprite->indexBuffer();
        if (sprite->texture() && vertices && indices) {
            EXPECT_EQ(vertices->length(), sprite->videoPlane()->verticesLength());
            ++drawn;
        }
        EXPECT_FALSE(sprite->pipelineName().empty());
    }
    capture.join();
    EXPECT_GT(drawn, 0);
    // The last frame was landscape.
    EXPECT_EQ(sprite->videoOrientation(), 2u);
    EXPECT_EQ(sprite->orientedPlane()->topLeft(), (FLKPoint{90, 0}));
    EXPECT_EQ(sprite->vertexBuffer()->contents().size(), sprite->orientedPlane()->verticesLength());
}

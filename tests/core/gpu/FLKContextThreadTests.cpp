#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "core/gpu/FLKBiplanarTexture.h"
#include "core/gpu/FLKContext.h"

TEST(FLKContextThreads, ScopesOnOneContextFromManyThreadsTakeTurns) {
    auto context = FLKContext::contextWithSize({720, 720});
    ASSERT_TRUE(context->isValid()) << context->errorDescription();
    std::atomic<int> failures{0};
    std::atomic<int> inside{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 25; ++i) {
                FLKContext::Scope scope(context);
                if (inside.fetch_add(1) != 0) ++failures;
                if (!scope.isCurrent() || FLKContext::current() != context.get()) ++failures;
                GLint major = 0;
                glGetIntegerv(GL_MAJOR_VERSION, &major);
                if (major < 4) ++failures;
                inside.fetch_sub(1);
            }
            if (FLKContext::current() != nullptr) ++failures;
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
}

TEST(FLKContextThreads, FramesMadeOnADecoderThreadUploadOnTheRenderThread) {
    auto context = FLKContext::contextWithSize({720, 720});
    ASSERT_TRUE(context->isValid());
    std::shared_ptr<FLKBiplanarTexture> frameTexture;
    std::thread decoder([&] {
        auto planes = std::make_shared<std::vector<uint8_t>>(16 * 16 + 16 * 8, 90);
        FLKNV12Frame frame{16, 16, planes->data(), 16, planes->data() + 256, 16, planes};
        frameTexture = std::make_shared<FLKBiplanarTexture>(frame, 0.5);
        EXPECT_EQ(frameTexture->texture(), nullptr);
    });
    decoder.join();

    std::thread renderer([&] {
        FLKContext::Scope scope(context);
        ASSERT_TRUE(scope.isCurrent());
        frameTexture->refreshTexture();
        ASSERT_TRUE(frameTexture->texture());
        EXPECT_EQ(frameTexture->texture()->readPixels(), std::vector<uint8_t>(256, 90));
    });
    renderer.join();
}

#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include "core/gpu/FLKContext.h"
#include "core/gpu/FLKGPUTexture.h"
#include "core/gpu/FLKGPUTestSupport.h"

using FLKContextTest = FLKGLTest;

TEST_F(FLKContextTest, SharedContextIsOpenGL45CoreAndSupported) {
    EXPECT_EQ(context, FLKContext::sharedContext());
    std::string reason = "untouched";
    EXPECT_TRUE(FLKContext::isGPUSupported(&reason));
    EXPECT_EQ(reason, "untouched");

    GLint major = 0, minor = 0, profile = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
    EXPECT_GE(major * 10 + minor, 45);
    EXPECT_TRUE(profile & GL_CONTEXT_CORE_PROFILE_BIT);
    EXPECT_FALSE(context->deviceName().empty());
    EXPECT_NE(context->versionString().find("4."), std::string::npos);
    EXPECT_EQ(FLKContext::current(), context.get());
    EXPECT_TRUE(context->isCurrent());
}

// What the renderer and the image filters rely on.
TEST_F(FLKContextTest, DriverOffersMultisamplingAndComputeShaders) {
    GLint samples = 0, invocations = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &samples);
    glGetIntegerv(GL_MAX_COMPUTE_WORK_GROUP_INVOCATIONS, &invocations);
    EXPECT_GE(samples, 4);
    EXPECT_GE(invocations, 256);
}

TEST_F(FLKContextTest, DefaultSamplerIsLinearAndClampsToEdge) {
    GLuint sampler = context->samplerState();
    ASSERT_NE(sampler, 0u);
    EXPECT_EQ(context->samplerState(), sampler);
    GLint value = 0;
    glGetSamplerParameteriv(sampler, GL_TEXTURE_MIN_FILTER, &value);
    EXPECT_EQ(value, GL_LINEAR);
    glGetSamplerParameteriv(sampler, GL_TEXTURE_MAG_FILTER, &value);
    EXPECT_EQ(value, GL_LINEAR);
    glGetSamplerParameteriv(sampler, GL_TEXTURE_WRAP_S, &value);
    EXPECT_EQ(value, GL_CLAMP_TO_EDGE);
    glGetSamplerParameteriv(sampler, GL_TEXTURE_WRAP_T, &value);
    EXPECT_EQ(value, GL_CLAMP_TO_EDGE);
}

TEST(FLKContextGeometry, SizeFpsAndCoordinateFlips) {
    auto context = FLKContext::sharedContext();
    EXPECT_EQ(context->size(), (FLKSize{720, 720}));
    EXPECT_EQ(FLKContext::fps(), 30);
    EXPECT_EQ(context->gpuPointForPoint({10, 20}), (FLKPoint{10, 700}));
    EXPECT_EQ(context->gpuRectForRect({10, 20, 100, 50}), (FLKRect{10, 650, 100, 50}));
}

TEST(FLKContextScopes, NestedScopesRestoreThePreviousContext) {
    auto shared = FLKContext::sharedContext();
    auto other = FLKContext::contextWithSize({320, 240});
    ASSERT_TRUE(other->isValid()) << other->errorDescription();
    EXPECT_EQ(other->size(), (FLKSize{320, 240}));
    EXPECT_EQ(FLKContext::current(), nullptr);
    {
        FLKContext::Scope outer(shared);
        ASSERT_TRUE(outer.isCurrent());
        {
            FLKContext::Scope inner(other);
            ASSERT_TRUE(inner.isCurrent());
            EXPECT_EQ(FLKContext::current(), other.get());
            {
                FLKContext::Scope again(other);
                EXPECT_TRUE(again.isCurrent());
            }
            EXPECT_EQ(FLKContext::current(), other.get());
        }
        EXPECT_EQ(FLKContext::current(), shared.get());
        GLint major = 0;
        glGetIntegerv(GL_MAJOR_VERSION, &major);
        EXPECT_GE(major, 4);
    }
    EXPECT_EQ(FLKContext::current(), nullptr);
}

TEST(FLKContextScopes, ObjectsAreSharedBetweenContexts) {
    auto other = FLKContext::contextWithSize({720, 720});
    ASSERT_TRUE(other->isValid());
    std::shared_ptr<FLKGPUTexture> texture;
    {
        FLKContext::Scope scope(FLKContext::sharedContext());
        const uint8_t pixel[4] = {1, 2, 3, 4};
        texture = FLKGPUTexture::uploadNow(1, 1, FLKPixelFormat::RGBA8, pixel, 4, 1, 1);
        ASSERT_TRUE(texture);
        glFinish();
    }
    FLKContext::Scope scope(other);
    EXPECT_EQ(texture->readPixels(), (std::vector<uint8_t>{1, 2, 3, 4}));
}

TEST(FLKContextScopes, TexturesDroppedWithoutAContextAreDeletedAtTheNextScope) {
    auto context = FLKContext::sharedContext();
    GLuint name = 0;
    auto texture = std::make_shared<FLKGPUTexture>(2, 2, FLKPixelFormat::R8, std::vector<uint8_t>(4, 7));
    {
        FLKContext::Scope scope(context);
        name = texture->name();
        ASSERT_NE(name, 0u);
        EXPECT_TRUE(glIsTexture(name));
    }
    texture.reset();  // no context current: deletion is deferred
    FLKContext::Scope scope(context);
    EXPECT_FALSE(glIsTexture(name));
}

TEST(FLKContextAdoption, AdoptsTheCurrentEGLContext) {
    auto own = FLKContext::contextWithSize({100, 100});
    FLKContext::Scope scope(own);
    ASSERT_TRUE(scope.isCurrent());
    auto adopted = FLKContext::adoptCurrentContext({640, 360});
    ASSERT_TRUE(adopted->isValid()) << adopted->errorDescription();
    EXPECT_EQ(adopted->size(), (FLKSize{640, 360}));
    EXPECT_EQ(adopted->deviceName(), own->deviceName());
}

TEST(FLKContextAdoption, NothingToAdoptWithoutACurrentContext) {
    ASSERT_EQ(FLKContext::current(), nullptr);
    auto adopted = FLKContext::adoptCurrentContext();
    EXPECT_FALSE(adopted->isValid());
    EXPECT_FALSE(adopted->errorDescription().empty());
}

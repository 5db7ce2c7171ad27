// Contexts made on a display and config handed in by a desktop toolkit share
// objects with the toolkit's own context. A program of its own: the choice of
// display is made once per process, before the shared context exists.
#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "core/gpu/FLKContext.h"

namespace {

// Stands in for the toolkit: its own display, config and context.
struct ToolkitGL {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLConfig config = nullptr;
    EGLContext context = EGL_NO_CONTEXT;

    ToolkitGL() {
        display = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr)) return;
        const EGLint attributes[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                     EGL_RED_SIZE, 8, EGL_GREEN_SIZE, 8, EGL_BLUE_SIZE, 8, EGL_NONE};
        EGLint count = 0;
        if (!eglChooseConfig(display, attributes, &config, 1, &count) || count < 1) return;
        eglBindAPI(EGL_OPENGL_API);
        const EGLint version[] = {EGL_CONTEXT_MAJOR_VERSION, 4, EGL_CONTEXT_MINOR_VERSION, 5,
                                  EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, version);
    }
    ~ToolkitGL() {
        if (context != EGL_NO_CONTEXT) eglDestroyContext(display, context);
    }
};

TEST(FLKContextNativePlatformTest, TexturesOfTheSharedContextAreTheToolkitContextsAndTheChoiceIsMadeOnce) {
    ToolkitGL toolkit;
    ASSERT_NE(toolkit.context, EGL_NO_CONTEXT) << "no surfaceless OpenGL 4.5 context";
    ASSERT_TRUE(FLKContext::useNativePlatform({toolkit.display, toolkit.config, toolkit.context}));

    auto shared = FLKContext::sharedContext();
    ASSERT_TRUE(shared->isValid()) << shared->errorDescription();
    const std::array<uint8_t, 8> pixels{10, 20, 30, 255, 200, 150, 100, 255};
    GLuint texture = 0;
    {
        FLKContext::Scope scope(*shared);
        ASSERT_TRUE(scope.isCurrent());
        glCreateTextures(GL_TEXTURE_2D, 1, &texture);
        glTextureStorage2D(texture, 1, GL_RGBA8, 2, 1);
        glTextureSubImage2D(texture, 0, 0, 0, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        glFinish();
    }

    ASSERT_TRUE(eglMakeCurrent(toolkit.display, EGL_NO_SURFACE, EGL_NO_SURFACE, toolkit.context));
    EXPECT_TRUE(glIsTexture(texture));
    std::array<uint8_t, 8> read{};
    glGetTextureImage(texture, 0, GL_RGBA, GL_UNSIGNED_BYTE, static_cast<GLsizei>(read.size()), read.data());
    EXPECT_EQ(read, pixels);
    glDeleteTextures(1, &texture);
    eglMakeCurrent(toolkit.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);

    // Contexts already made live on the first display: no second choice.
    EXPECT_FALSE(FLKContext::useNativePlatform({toolkit.display, toolkit.config, toolkit.context}));
}

}  // namespace

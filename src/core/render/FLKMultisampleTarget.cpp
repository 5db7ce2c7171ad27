#include "core/render/FLKMultisampleTarget.h"

#include <epoxy/gl.h>

std::unique_ptr<FLKMultisampleTarget> FLKMultisampleTarget::make(int width, int height, int sampleCount) {
    std::unique_ptr<FLKMultisampleTarget> target(new FLKMultisampleTarget(width, height, sampleCount));
    glCreateRenderbuffers(1, &target->renderbuffer_);
    // Asked for one sample, a driver may give its smallest multisampled count.
    glNamedRenderbufferStorageMultisample(target->renderbuffer_, sampleCount > 1 ? sampleCount : 0, GL_RGBA8, width, height);
    glCreateFramebuffers(1, &target->framebuffer_);
    glNamedFramebufferRenderbuffer(target->framebuffer_, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, target->renderbuffer_);
    glCreateFramebuffers(1, &target->resolveFramebuffer_);
    if (glCheckNamedFramebufferStatus(target->framebuffer_, GL_DRAW_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        return nullptr;
    }
    return target;
}

FLKMultisampleTarget::~FLKMultisampleTarget() {
    glDeleteFramebuffers(1, &resolveFramebuffer_);
    glDeleteFramebuffers(1, &framebuffer_);
    glDeleteRenderbuffers(1, &renderbuffer_);
}

void FLKMultisampleTarget::beginPass() {
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer_);
    glViewport(0, 0, width_, height_);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_CULL_FACE);
    const float clear[4] = {0, 0, 0, 0};
    glClearNamedFramebufferfv(framebuffer_, GL_COLOR, 0, clear);
}

void FLKMultisampleTarget::resolveInto(unsigned int texture) {
    glNamedFramebufferTexture(resolveFramebuffer_, GL_COLOR_ATTACHMENT0, texture, 0);
    glBlitNamedFramebuffer(framebuffer_, resolveFramebuffer_, 0, 0, width_, height_, 0, 0, width_, height_,
                           GL_COLOR_BUFFER_BIT, GL_NEAREST);
}

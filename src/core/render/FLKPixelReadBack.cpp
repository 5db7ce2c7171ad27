#include "core/render/FLKPixelReadBack.h"

#include <epoxy/gl.h>

#include <cstring>

#include "core/platform/FLKStageTimes.h"

void FLKPixelReadBack::createBuffersWithWidth(int width, int height) {
    if (pixelBuffer_.width == width && pixelBuffer_.height == height) return;
    pixelBuffer_ = FLKPixelBuffer(width, height);
}

void FLKPixelReadBack::readTexture(unsigned int texture, int width, int height, const Deliver& deliver) {
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    const GLsizei size = width * height * 4;
    if (!pipelined_) {
        createBuffersWithWidth(width, height);
        glGetTextureImage(texture, 0, GL_BGRA, GL_UNSIGNED_BYTE, size, pixelBuffer_.bgra.data());
        deliver(pixelBuffer_);
        return;
    }
    if (width != packWidth_ || height != packHeight_) {
        flush(deliver);
        releaseBuffers();
        glCreateBuffers(2, packBuffers_.data());
        for (unsigned int buffer : packBuffers_) glNamedBufferData(buffer, size, nullptr, GL_STREAM_READ);
        packWidth_ = width;
        packHeight_ = height;
    }
    glBindBuffer(GL_PIXEL_PACK_BUFFER, packBuffers_[next_]);
    glGetTextureImage(texture, 0, GL_BGRA, GL_UNSIGNED_BYTE, size, nullptr);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    fences_[next_] = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    glFlush();
    next_ ^= 1;
    if (queued_) deliverQueued(deliver);
    queued_ = true;
}

void FLKPixelReadBack::flush(const Deliver& deliver) {
    if (!queued_) return;
    next_ ^= 1;  // the queued frame is the one before the next slot
    deliverQueued(deliver);
    next_ ^= 1;
    queued_ = false;
}

void FLKPixelReadBack::deliverQueued(const Deliver& deliver) {
    // The frame queued before the one just read sits in the slot `next_` now points at.
    const int slot = next_;
    auto fence = static_cast<GLsync>(fences_[slot]);
    if (fence) {
        FLKStageTimes::WaitScope waiting(FLKStageTimes::kReadBack, FLKStageTimes::WaitScope::On::input);
        glClientWaitSync(fence, GL_SYNC_FLUSH_COMMANDS_BIT, GL_TIMEOUT_IGNORED);
        glDeleteSync(fence);
        fences_[slot] = nullptr;
    }
    createBuffersWithWidth(packWidth_, packHeight_);
    const size_t size = pixelBuffer_.bgra.size();
    const void* mapped = glMapNamedBufferRange(packBuffers_[slot], 0, static_cast<GLsizeiptr>(size), GL_MAP_READ_BIT);
    if (mapped) {
        std::memcpy(pixelBuffer_.bgra.data(), mapped, size);
        glUnmapNamedBuffer(packBuffers_[slot]);
        deliver(pixelBuffer_);
    }
}

void FLKPixelReadBack::releaseBuffers() {
    for (auto& fence : fences_) {
        if (fence) glDeleteSync(static_cast<GLsync>(fence));
        fence = nullptr;
    }
    if (packBuffers_[0]) glDeleteBuffers(2, packBuffers_.data());
    packBuffers_ = {};
    packWidth_ = packHeight_ = 0;
    next_ = 0;
    queued_ = false;
}

#include "core/render/FLKLendingReadBack.h"

#include <epoxy/gl.h>

#include "core/platform/FLKStageTimes.h"

namespace {
constexpr GLbitfield kMapping = GL_MAP_READ_BIT | GL_MAP_PERSISTENT_BIT | GL_MAP_COHERENT_BIT;
}

FLKLendingReadBack::FLKLendingReadBack() = default;

FLKLendingReadBack::~FLKLendingReadBack() {
    // Without the context the buffers cannot be deleted here; releaseBuffers() did it.
    waitUntilReturned(-1);
}

void FLKLendingReadBack::waitUntilReturned(int slot) const {
    std::unique_lock lock(leases_->mutex);
    leases_->returned.wait(lock, [&] {
        if (slot >= 0) return !leases_->lent[slot];
        for (bool lent : leases_->lent) {
            if (lent) return false;
        }
        return true;
    });
}

void FLKLendingReadBack::createBuffers(int width, int height) {
    const auto size = static_cast<GLsizeiptr>(width) * height * 4;
    glCreateBuffers(kSlots, buffers_.data());
    for (int slot = 0; slot < kSlots; ++slot) {
        glNamedBufferStorage(buffers_[slot], size, nullptr, kMapping | GL_CLIENT_STORAGE_BIT);
        mapped_[slot] = static_cast<const std::uint8_t*>(glMapNamedBufferRange(buffers_[slot], 0, size, kMapping));
        // A driver that cannot map persistently gets the frame read into memory of ours.
        if (!mapped_[slot]) memory_[slot].assign(static_cast<size_t>(size), 0);
    }
    width_ = width;
    height_ = height;
}

void FLKLendingReadBack::readTexture(unsigned int texture, int width, int height, const Lend& lend) {
    if (width != width_ || height != height_) {
        flush(lend);
        releaseBuffers();
        createBuffers(width, height);
    }
    const int slot = next_;
    {
        FLKStageTimes::WaitScope waiting(FLKStageTimes::kReadBack, FLKStageTimes::WaitScope::On::output);
        waitUntilReturned(slot);
    }
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    const GLsizei size = width * height * 4;
    if (mapped_[slot]) {
        glBindBuffer(GL_PIXEL_PACK_BUFFER, buffers_[slot]);
        glGetTextureImage(texture, 0, GL_BGRA, GL_UNSIGNED_BYTE, size, nullptr);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        fences_[slot] = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
        glFlush();
    } else {
        glGetTextureImage(texture, 0, GL_BGRA, GL_UNSIGNED_BYTE, size, memory_[slot].data());
    }
    next_ = (next_ + 1) % kSlots;
    if (queued_ >= 0) lendQueued(lend);
    queued_ = slot;
}

void FLKLendingReadBack::flush(const Lend& lend) {
    if (queued_ >= 0) lendQueued(lend);
    queued_ = -1;
}

void FLKLendingReadBack::lendQueued(const Lend& lend) {
    const int slot = queued_;
    if (auto fence = static_cast<GLsync>(fences_[slot])) {
        FLKStageTimes::WaitScope waiting(FLKStageTimes::kReadBack, FLKStageTimes::WaitScope::On::input);
        glClientWaitSync(fence, GL_SYNC_FLUSH_COMMANDS_BIT, GL_TIMEOUT_IGNORED);
        glDeleteSync(fence);
        fences_[slot] = nullptr;
    }
    {
        std::lock_guard lock(leases_->mutex);
        leases_->lent[slot] = true;
    }
    FLKLentPixels pixels;
    pixels.bgra = mapped_[slot] ? mapped_[slot] : memory_[slot].data();
    pixels.width = width_;
    pixels.height = height_;
    pixels.stride = width_ * 4;
    // Whoever drops the last copy hands the slot back and wakes the render thread.
    pixels.lease = std::shared_ptr<void>(leases_.get(), [leases = leases_, slot](void*) {
        {
            std::lock_guard lock(leases->mutex);
            leases->lent[slot] = false;
        }
        leases->returned.notify_all();
    });
    queued_ = -1;
    lend(std::move(pixels));
}

void FLKLendingReadBack::releaseBuffers() {
    waitUntilReturned(-1);
    for (auto& fence : fences_) {
        if (fence) glDeleteSync(static_cast<GLsync>(fence));
        fence = nullptr;
    }
    if (buffers_[0]) {
        for (int slot = 0; slot < kSlots; ++slot) {
            if (mapped_[slot]) glUnmapNamedBuffer(buffers_[slot]);
        }
        glDeleteBuffers(kSlots, buffers_.data());
    }
    buffers_ = {};
    mapped_ = {};
    for (auto& memory : memory_) std::vector<std::uint8_t>().swap(memory);
    width_ = height_ = 0;
    next_ = 0;
    queued_ = -1;
}

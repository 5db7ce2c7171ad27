#include "core/capture/FLKPixelBufferPool.h"

std::shared_ptr<FLKPixelBufferPool> FLKPixelBufferPool::make(size_t capacity) {
    return std::shared_ptr<FLKPixelBufferPool>(new FLKPixelBufferPool(capacity));
}

std::shared_ptr<FLKPixelBuffer> FLKPixelBufferPool::take(int width, int height) {
    std::unique_ptr<FLKPixelBuffer> buffer;
    {
        std::lock_guard lock(mutex_);
        while (!free_.empty() && !buffer) {
            buffer = std::move(free_.back());
            free_.pop_back();
            if (buffer->width != width || buffer->height != height) buffer.reset();  // the size changed
        }
    }
    if (!buffer) buffer = std::make_unique<FLKPixelBuffer>(width, height);
    std::weak_ptr<FLKPixelBufferPool> pool = weak_from_this();
    return std::shared_ptr<FLKPixelBuffer>(buffer.release(), [pool](FLKPixelBuffer* returned) {
        if (auto owner = pool.lock()) owner->giveBack(returned);
        else delete returned;
    });
}

void FLKPixelBufferPool::giveBack(FLKPixelBuffer* buffer) {
    std::unique_ptr<FLKPixelBuffer> owned(buffer);
    std::lock_guard lock(mutex_);
    if (free_.size() < capacity_) free_.push_back(std::move(owned));
}

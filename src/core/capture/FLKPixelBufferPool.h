#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "core/platform/FLKPixelBuffer.h"

// Recycles the pictures of a capture stream: a 1080p picture is 8 MB, and a
// fresh one for every frame costs a page fault for every 4 KB of it.
// Buffers go back to the pool when their last user lets go, from any thread.
class FLKPixelBufferPool : public std::enable_shared_from_this<FLKPixelBufferPool> {
public:
    static std::shared_ptr<FLKPixelBufferPool> make(size_t capacity = 6);
    // A buffer of that size with unspecified contents.
    std::shared_ptr<FLKPixelBuffer> take(int width, int height);

private:
    explicit FLKPixelBufferPool(size_t capacity) : capacity_(capacity) {}
    void giveBack(FLKPixelBuffer* buffer);

    const size_t capacity_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<FLKPixelBuffer>> free_;  // guarded by mutex_
};

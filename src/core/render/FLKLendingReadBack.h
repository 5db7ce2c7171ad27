#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "core/platform/FLKLentPixels.h"

// Reads resolved frames back into a ring of persistently mapped pixel-pack
// buffers and lends each one where it lies, so that the render thread copies
// nothing and the consumer (the colour conversion) reads the frame straight
// from there. Frame n is lent once frame n + 1 has been queued; a slot is
// read into again only once its lease was dropped, and the render thread
// blocks until then, so at most kSlots frames are in flight.
//
// Threads: GL calls (readTexture, flush, releaseBuffers) on one thread with
// the context current; leases may be dropped on any thread.
class FLKLendingReadBack {
public:
    using Lend = std::function<void(FLKLentPixels)>;
    // One being read back, one queued for the conversion, one being converted;
    // no more: each slot is a full frame of memory.
    static constexpr int kSlots = 3;

    FLKLendingReadBack();
    ~FLKLendingReadBack();
    FLKLendingReadBack(const FLKLendingReadBack&) = delete;
    FLKLendingReadBack& operator=(const FLKLendingReadBack&) = delete;

    // Reads `texture` (BGRA8, the given size) and lends the frame queued before it.
    void readTexture(unsigned int texture, int width, int height, const Lend& lend);
    // Lends the frame still queued, if any.
    void flush(const Lend& lend);
    // Waits until every lease was dropped, then deletes the buffers.
    void releaseBuffers();

private:
    // Which slots are lent: shared with the leases, which may outlive a
    // frame's delivery on another thread.
    struct Leases {
        std::mutex mutex;
        std::condition_variable returned;
        std::array<bool, kSlots> lent{};  // guarded by mutex
    };

    void createBuffers(int width, int height);
    void waitUntilReturned(int slot) const;
    void lendQueued(const Lend& lend);

    const std::shared_ptr<Leases> leases_ = std::make_shared<Leases>();
    // The render thread's alone.
    std::array<unsigned int, kSlots> buffers_{};
    std::array<const std::uint8_t*, kSlots> mapped_{};
    std::array<std::vector<std::uint8_t>, kSlots> memory_;  // where mapping is not to be had
    std::array<void*, kSlots> fences_{};                    // GLsync of the copy into each slot
    int width_ = 0;
    int height_ = 0;
    int next_ = 0;     // the slot the next frame goes into
    int queued_ = -1;  // the slot holding a frame read and not yet lent
};

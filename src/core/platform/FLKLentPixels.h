#pragma once

#include <cstdint>
#include <memory>

// A rendered frame (BGRA, rows top first) left where it was read back and
// lent to its consumer: the memory stays valid, and is not written again,
// until the last copy of `lease` is dropped. Any thread may drop it.
struct FLKLentPixels {
    const std::uint8_t* bgra = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    std::shared_ptr<void> lease;
};

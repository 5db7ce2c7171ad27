#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

// A GL buffer whose bytes are kept in memory and can be replaced from any
// thread; the render thread uploads the latest bytes when it asks for name().
class FLKGPUBuffer {
public:
    FLKGPUBuffer(const void* bytes, size_t length);
    explicit FLKGPUBuffer(std::vector<uint8_t> bytes);
    ~FLKGPUBuffer();
    FLKGPUBuffer(const FLKGPUBuffer&) = delete;
    FLKGPUBuffer& operator=(const FLKGPUBuffer&) = delete;

    size_t length() const;
    std::vector<uint8_t> contents() const;
    void setContents(const void* bytes, size_t length);

    // The GL buffer holding the latest contents; 0 without a current context.
    // Render thread only.
    unsigned int name();

private:
    mutable std::mutex mutex_;
    std::vector<uint8_t> bytes_;  // guarded by mutex_
    bool dirty_ = true;           // guarded by mutex_
    unsigned int name_ = 0;       // guarded by mutex_
    size_t uploadedLength_ = 0;   // guarded by mutex_
};

#include "core/gpu/FLKGPUBuffer.h"

#include <epoxy/gl.h>

#include <cstring>

#include "core/gpu/FLKContext.h"

FLKGPUBuffer::FLKGPUBuffer(const void* bytes, size_t length)
    : bytes_(static_cast<const uint8_t*>(bytes), static_cast<const uint8_t*>(bytes) + length) {}

FLKGPUBuffer::FLKGPUBuffer(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

FLKGPUBuffer::~FLKGPUBuffer() { FLKContext::releaseObject(FLKContext::ObjectKind::buffer, name_); }

size_t FLKGPUBuffer::length() const {
    std::lock_guard lock(mutex_);
    return bytes_.size();
}

std::vector<uint8_t> FLKGPUBuffer::contents() const {
    std::lock_guard lock(mutex_);
    return bytes_;
}

void FLKGPUBuffer::setContents(const void* bytes, size_t length) {
    std::lock_guard lock(mutex_);
    bytes_.assign(static_cast<const uint8_t*>(bytes), static_cast<const uint8_t*>(bytes) + length);
    dirty_ = true;
}

unsigned int FLKGPUBuffer::name() {
    std::lock_guard lock(mutex_);
    if (!dirty_ || !FLKContext::current()) return name_;
    if (!name_) glCreateBuffers(1, &name_);
    if (uploadedLength_ != bytes_.size() || bytes_.empty()) {
        // Zero-length buffers cannot be bound as ranges; keep one byte.
        glNamedBufferData(name_, static_cast<GLsizeiptr>(bytes_.empty() ? 1 : bytes_.size()),
                          bytes_.empty() ? nullptr : bytes_.data(), GL_DYNAMIC_DRAW);
        uploadedLength_ = bytes_.size();
    } else {
        glNamedBufferSubData(name_, 0, static_cast<GLsizeiptr>(bytes_.size()), bytes_.data());
    }
    dirty_ = false;
    return name_;
}

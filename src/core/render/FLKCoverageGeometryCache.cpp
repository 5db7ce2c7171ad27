#include "core/render/FLKCoverageGeometryCache.h"

#include <cstring>

#include "core/render/FLKCoverageQuad.h"
#include "core/render/FLKProjectiveQuad.h"

FLKCoverageGeometryCache::FLKCoverageGeometryCache()
    : interiorIndexBuffer_(std::make_shared<FLKGPUBuffer>(FLKProjectiveQuad::kIndices.data(),
                                                          sizeof(FLKProjectiveQuad::kIndices))),
      holedInteriorIndexBuffer_(std::make_shared<FLKGPUBuffer>(FLKCoverageQuad::kHoledInteriorIndices.data(),
                                                               sizeof(FLKCoverageQuad::kHoledInteriorIndices))),
      bandIndexBuffer_(std::make_shared<FLKGPUBuffer>(FLKCoverageQuad::kBandIndices.data(),
                                                      sizeof(FLKCoverageQuad::kBandIndices))) {}

std::shared_ptr<FLKGPUBuffer> FLKCoverageGeometryCache::vertexBuffer(const FLKObject::Ptr& node, Part part,
                                                                     const void* bytes, size_t length) {
    Entry& entry = entries_[static_cast<int>(part)][node.get()];
    bool sameNode = entry.buffer && entry.node.lock() == node;
    bool sameBytes = entry.bytes.size() == length && std::memcmp(entry.bytes.data(), bytes, length) == 0;
    if (sameNode && sameBytes) return entry.buffer;
    entry.node = node;
    entry.bytes.assign(static_cast<const uint8_t*>(bytes), static_cast<const uint8_t*>(bytes) + length);
    if (sameNode) {
        entry.buffer->setContents(bytes, length);
    } else {
        entry.buffer = std::make_shared<FLKGPUBuffer>(bytes, length);
    }
    return entry.buffer;
}

void FLKCoverageGeometryCache::prune() {
    for (auto& entries : entries_) {
        std::erase_if(entries, [](const auto& item) { return item.second.node.expired(); });
    }
}

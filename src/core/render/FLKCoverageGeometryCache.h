#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "core/gpu/FLKGPUBuffer.h"
#include "core/scene/FLKObject.h"

// The vertex buffers of nodes drawn with analytic coverage, one per node,
// refilled only when the node's records change (they depend on the camera and
// the target size as well as on the node). Render thread only.
class FLKCoverageGeometryCache {
public:
    FLKCoverageGeometryCache();

    enum class Part { interior, band };

    // The node's buffer for that part, holding exactly `bytes`.
    std::shared_ptr<FLKGPUBuffer> vertexBuffer(const FLKObject::Ptr& node, Part part, const void* bytes,
                                               size_t length);
    // The triangles of each part (see FLKCoverageQuad), shared by every node.
    const std::shared_ptr<FLKGPUBuffer>& indexBuffer(Part part, bool holed = false) const {
        if (part == Part::band) return bandIndexBuffer_;
        return holed ? holedInteriorIndexBuffer_ : interiorIndexBuffer_;
    }
    // Forgets nodes that are gone.
    void prune();

private:
    struct Entry {
        std::weak_ptr<FLKObject> node;
        std::vector<uint8_t> bytes;
        std::shared_ptr<FLKGPUBuffer> buffer;
    };
    std::unordered_map<const FLKObject*, Entry> entries_[2];  // by Part
    std::shared_ptr<FLKGPUBuffer> interiorIndexBuffer_;
    std::shared_ptr<FLKGPUBuffer> holedInteriorIndexBuffer_;
    std::shared_ptr<FLKGPUBuffer> bandIndexBuffer_;
};

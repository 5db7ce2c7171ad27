#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "core/gpu/FLKTexture.h"

// A ring of the last `size` frames. Not locked: its owner uses it from one
// thread at a time.
class FLKTextureBuffer {
public:
    FLKTextureBuffer() : FLKTextureBuffer(5) {}
    explicit FLKTextureBuffer(unsigned size) : size_(size) {}

    unsigned size() const { return size_; }
    long currentIndex() const { return currentIndex_; }
    const std::vector<std::shared_ptr<FLKTexture>>& ring() const { return ring_; }

    void addTexture(std::shared_ptr<FLKTexture> texture);
    std::shared_ptr<FLKTexture> currentTexture() const;
    void clear();
    // Drops the textures stamped before `time`, keeping the ring order.
    void removeTexturesBefore(double time);
    // First in ring order whose time stamp is within `margin` of `time`.
    std::shared_ptr<FLKTexture> textureAtTime(double time, double margin) const;

    struct ShownTexture {
        std::shared_ptr<FLKTexture> texture;
        // A later texture is in the ring: none still to come can answer instead.
        bool isFollowed = false;
    };
    // For textures added in time order: the one shown at `time`, that is the
    // latest stamped before it, however far back. One stamped within
    // `tolerance` of `time` shows only after it, so that at an exact frame
    // boundary the frame before answers. The oldest answers a time before
    // every texture.
    ShownTexture textureShownAtTime(double time, double tolerance) const;
    double lastTextureTime() const;
    // (first, last) time stamps in ring order; (0, 0) when empty.
    std::pair<double, double> timeRange() const;

private:
    unsigned size_;
    long currentIndex_ = -1;
    std::vector<std::shared_ptr<FLKTexture>> ring_;
};

#include "core/gpu/FLKTextureBuffer.h"

#include <algorithm>
#include <cmath>

void FLKTextureBuffer::addTexture(std::shared_ptr<FLKTexture> texture) {
    if (size_ == 0) return;
    ++currentIndex_;
    if (currentIndex_ >= static_cast<long>(size_)) currentIndex_ = 0;
    if (ring_.size() < size_) {
        ring_.insert(ring_.begin() + std::min<long>(currentIndex_, static_cast<long>(ring_.size())), std::move(texture));
    } else {
        ring_[static_cast<size_t>(currentIndex_)] = std::move(texture);
    }
}

std::shared_ptr<FLKTexture> FLKTextureBuffer::currentTexture() const {
    if (currentIndex_ < 0 || currentIndex_ >= static_cast<long>(ring_.size())) return nullptr;
    return ring_[static_cast<size_t>(currentIndex_)];
}

void FLKTextureBuffer::clear() {
    ring_.clear();
    currentIndex_ = -1;
}

void FLKTextureBuffer::removeTexturesBefore(double time) {
    const auto current = currentTexture();
    std::erase_if(ring_, [time](const auto& texture) { return !texture || texture->sampleTimeStamp() < time; });
    const auto it = std::find(ring_.begin(), ring_.end(), current);
    currentIndex_ = it != ring_.end() ? it - ring_.begin() : static_cast<long>(ring_.size()) - 1;
}

std::shared_ptr<FLKTexture> FLKTextureBuffer::textureAtTime(double time, double margin) const {
    for (const auto& texture : ring_) {
        if (texture && std::fabs(texture->sampleTimeStamp() - time) <= margin) return texture;
    }
    return nullptr;
}

FLKTextureBuffer::ShownTexture FLKTextureBuffer::textureShownAtTime(double time, double tolerance) const {
    const size_t count = ring_.size();
    if (count == 0) return {};
    // Once the ring has wrapped, the oldest texture follows the current one.
    const size_t oldest = count == size_ ? static_cast<size_t>(currentIndex_ + 1) % count : 0;
    auto byAge = [&](size_t k) -> const std::shared_ptr<FLKTexture>& { return ring_[(oldest + k) % count]; };
    for (size_t k = count; k-- > 0;) {
        const auto& texture = byAge(k);
        if (texture && texture->sampleTimeStamp() < time - tolerance) return {texture, k + 1 < count};
    }
    return {byAge(0), true};
}

double FLKTextureBuffer::lastTextureTime() const {
    return ring_.empty() || !ring_.back() ? 0.0 : ring_.back()->sampleTimeStamp();
}

std::pair<double, double> FLKTextureBuffer::timeRange() const {
    if (ring_.empty() || !ring_.front() || !ring_.back()) return {0.0, 0.0};
    return {ring_.front()->sampleTimeStamp(), ring_.back()->sampleTimeStamp()};
}

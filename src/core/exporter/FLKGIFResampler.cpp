#include "core/exporter/FLKGIFResampler.h"

#include <algorithm>
#include <cmath>

FLKGIFResampler::FLKGIFResampler(int outputWidth, int outputHeight)
    : outputWidth_(std::max(outputWidth, 1)), outputHeight_(std::max(outputHeight, 1)) {}

FLKGIFResampler::Taps FLKGIFResampler::tapsFor(int sourceLength, int outputLength) {
    Taps result;
    const double scale = static_cast<double>(sourceLength) / outputLength;
    for (int i = 0; i < outputLength; ++i) {
        result.first.push_back(static_cast<int>(result.taps.size()));
        if (scale >= 1.0) {
            // Every source sample under the output sample, by the share it covers.
            const double begin = i * scale, end = (i + 1) * scale;
            for (int s = static_cast<int>(begin); s < sourceLength && s < end; ++s) {
                double covered = std::min<double>(end, s + 1) - std::max<double>(begin, s);
                if (covered > 1e-9) result.taps.push_back({s, static_cast<float>(covered / scale)});
            }
        } else {
            const double centre = (i + 0.5) * scale - 0.5;
            const int left = static_cast<int>(std::floor(centre));
            const float t = static_cast<float>(centre - left);
            result.taps.push_back({std::clamp(left, 0, sourceLength - 1), 1.0f - t});
            result.taps.push_back({std::clamp(left + 1, 0, sourceLength - 1), t});
        }
    }
    result.first.push_back(static_cast<int>(result.taps.size()));
    return result;
}

void FLKGIFResampler::copyOpaque(const FLKPixelBuffer& source, std::vector<std::uint8_t>& rgba) const {
    for (int y = 0; y < outputHeight_; ++y) {
        const std::uint8_t* in = source.bgra.data() + static_cast<size_t>(y) * source.stride;
        std::uint8_t* out = rgba.data() + static_cast<size_t>(y) * outputWidth_ * 4;
        for (int x = 0; x < outputWidth_; ++x, in += 4, out += 4) {
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
            out[3] = 255;
        }
    }
}

void FLKGIFResampler::resample(const FLKPixelBuffer& source, std::vector<std::uint8_t>& rgba) {
    rgba.resize(static_cast<size_t>(outputWidth_) * outputHeight_ * 4);
    const bool complete = source.width > 0 && source.height > 0 && source.stride >= source.width * 4 &&
                          source.bgra.size() >= static_cast<size_t>(source.stride) * (source.height - 1) + source.width * 4;
    if (!complete) {
        std::fill(rgba.begin(), rgba.end(), 0);
        for (size_t i = 3; i < rgba.size(); i += 4) rgba[i] = 255;
        return;
    }
    if (source.width == outputWidth_ && source.height == outputHeight_) {
        copyOpaque(source, rgba);
        return;
    }
    if (source.width != sourceWidth_ || source.height != sourceHeight_) {
        sourceWidth_ = source.width;
        sourceHeight_ = source.height;
        horizontal_ = tapsFor(sourceWidth_, outputWidth_);
        vertical_ = tapsFor(sourceHeight_, outputHeight_);
    }
    // Horizontal pass over every source row, then the vertical pass per output row.
    rows_.assign(static_cast<size_t>(sourceHeight_) * outputWidth_ * 3, 0.0f);
    for (int y = 0; y < sourceHeight_; ++y) {
        const std::uint8_t* in = source.bgra.data() + static_cast<size_t>(y) * source.stride;
        float* out = rows_.data() + static_cast<size_t>(y) * outputWidth_ * 3;
        for (int x = 0; x < outputWidth_; ++x, out += 3) {
            for (int k = horizontal_.first[x]; k < horizontal_.first[x + 1]; ++k) {
                const Tap& tap = horizontal_.taps[k];
                const std::uint8_t* p = in + tap.index * 4;
                out[0] += tap.weight * p[2];
                out[1] += tap.weight * p[1];
                out[2] += tap.weight * p[0];
            }
        }
    }
    std::vector<float> line(static_cast<size_t>(outputWidth_) * 3);
    for (int y = 0; y < outputHeight_; ++y) {
        std::fill(line.begin(), line.end(), 0.0f);
        for (int k = vertical_.first[y]; k < vertical_.first[y + 1]; ++k) {
            const Tap& tap = vertical_.taps[k];
            const float* row = rows_.data() + static_cast<size_t>(tap.index) * outputWidth_ * 3;
            for (size_t i = 0; i < line.size(); ++i) line[i] += tap.weight * row[i];
        }
        std::uint8_t* out = rgba.data() + static_cast<size_t>(y) * outputWidth_ * 4;
        for (int x = 0; x < outputWidth_; ++x, out += 4) {
            for (int c = 0; c < 3; ++c) out[c] = static_cast<std::uint8_t>(std::clamp(line[x * 3 + c] + 0.5f, 0.0f, 255.0f));
            out[3] = 255;
        }
    }
}

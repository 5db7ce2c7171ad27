#include "core/exporter/FLKGIFEncoder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {
struct SpoolHeader {
    std::int32_t left, top, width, height;
};
}  // namespace

FLKGIFEncoder::FLKGIFEncoder(int fd, std::filesystem::path displayURL, const Settings& settings)
    : displayURL_(std::move(displayURL)),
      settings_(settings),
      resampler_(settings.width, settings.height),
      quantizer_(settings.speed, settings.ditherLevel),
      writer_(fd, displayURL_) {}

FLKGIFEncoder::~FLKGIFEncoder() = default;

int FLKGIFEncoder::delayHundredths(std::uint64_t index, double frameDelay) {
    auto elapsed = [frameDelay](std::uint64_t frames) {
        return std::llround(static_cast<double>(frames) * frameDelay * 100.0);
    };
    return static_cast<int>(std::clamp<long long>(elapsed(index + 1) - elapsed(index), 0, 0xFFFF));
}

bool FLKGIFEncoder::fail(const std::string& reason, FLKError* error) {
    flk::setError(error, FLKError::make("FLKGIFRecorderErrorDomain", 1, "Could not write " + displayURL_.string() + ".",
                                        reason));
    return false;
}

bool FLKGIFEncoder::addFrame(const FLKPixelBuffer& frame, FLKError* error) {
    resampler_.resample(frame, current_);
    Rect rect = changedRect(current_);
    bool ok;
    if (settings_.paletteMode == PaletteMode::Shared) {
        ok = spool(rect, error);
    } else {
        crop(current_, settings_.width, rect, cropped_);
        ok = ensureBegun(error) && encode(rect, cropped_.data(), error);
    }
    previous_.swap(current_);
    ++framesAdded_;
    return ok;
}

FLKGIFEncoder::Rect FLKGIFEncoder::changedRect(const std::vector<std::uint8_t>& rgba) const {
    const int width = settings_.width, height = settings_.height;
    if (previous_.size() != rgba.size()) return {0, 0, width, height};
    int top = height, bottom = -1, left = width, right = -1;
    for (int y = 0; y < height; ++y) {
        const auto* a = reinterpret_cast<const std::uint32_t*>(rgba.data()) + static_cast<size_t>(y) * width;
        const auto* b = reinterpret_cast<const std::uint32_t*>(previous_.data()) + static_cast<size_t>(y) * width;
        if (std::memcmp(a, b, static_cast<size_t>(width) * 4) == 0) continue;
        top = std::min(top, y);
        bottom = y;
        int x = 0;
        while (a[x] == b[x]) ++x;
        left = std::min(left, x);
        x = width - 1;
        while (a[x] == b[x]) --x;
        right = std::max(right, x);
    }
    if (bottom < 0) return {};
    return {left, top, right - left + 1, bottom - top + 1};
}

void FLKGIFEncoder::crop(const std::vector<std::uint8_t>& rgba, int stride, const Rect& rect,
                         std::vector<std::uint8_t>& out) {
    out.resize(static_cast<size_t>(rect.width) * rect.height * 4);
    for (int y = 0; y < rect.height; ++y) {
        std::memcpy(out.data() + static_cast<size_t>(y) * rect.width * 4,
                    rgba.data() + (static_cast<size_t>(rect.top + y) * stride + rect.left) * 4,
                    static_cast<size_t>(rect.width) * 4);
    }
}

bool FLKGIFEncoder::spool(const Rect& rect, FLKError* error) {
    if (!spool_) {
        spool_.reset(std::tmpfile());
        if (!spool_) return fail(std::string("No room for the frames: ") + std::strerror(errno), error);
    }
    SpoolHeader header{rect.left, rect.top, rect.width, rect.height};
    bool ok = std::fwrite(&header, sizeof header, 1, spool_.get()) == 1;
    if (ok && !rect.empty()) {
        crop(current_, settings_.width, rect, cropped_);
        ok = std::fwrite(cropped_.data(), cropped_.size(), 1, spool_.get()) == 1 &&
             quantizer_.addToHistogram(cropped_.data(), rect.width, rect.height);
    }
    return ok || fail(std::string("No room for the frames: ") + std::strerror(errno), error);
}

bool FLKGIFEncoder::ensureBegun(FLKError* error) {
    if (begun_) return true;
    begun_ = true;
    const std::vector<FLKGIFColor> none;
    const auto& colors = settings_.paletteMode == PaletteMode::Shared ? quantizer_.sharedColors() : none;
    return writer_.begin(settings_.width, settings_.height, colors, settings_.loopCount, error);
}

bool FLKGIFEncoder::finish(FLKError* error) {
    if (settings_.paletteMode == PaletteMode::Shared) {
        if (!quantizer_.buildSharedPalette()) return fail("The colour palette could not be made.", error);
        if (!ensureBegun(error) || !encodeSpooled(error)) return false;
    } else if (!ensureBegun(error)) {
        return false;
    }
    return writer_.end(error);
}

bool FLKGIFEncoder::encodeSpooled(FLKError* error) {
    if (!spool_) return true;
    std::rewind(spool_.get());
    for (std::uint64_t i = 0; i < framesAdded_; ++i) {
        SpoolHeader header{};
        if (std::fread(&header, sizeof header, 1, spool_.get()) != 1) return fail("The spooled frames are gone.", error);
        Rect rect{header.left, header.top, header.width, header.height};
        if (!rect.empty()) {
            cropped_.resize(static_cast<size_t>(rect.width) * rect.height * 4);
            if (std::fread(cropped_.data(), cropped_.size(), 1, spool_.get()) != 1) {
                return fail("The spooled frames are gone.", error);
            }
        }
        if (!encode(rect, cropped_.data(), error)) return false;
    }
    return true;
}

bool FLKGIFEncoder::writeUnchangedFrame(int transparentIndex, const std::vector<FLKGIFColor>& colors,
                                        FLKError* error) {
    const std::uint8_t index = static_cast<std::uint8_t>(std::max(transparentIndex, 0));
    FLKGIFWriter::Frame frame;
    frame.width = frame.height = 1;
    frame.indices = &index;
    frame.localColors = colors;
    frame.delayHundredths = delayHundredths(framesWritten_++, settings_.frameDelay);
    frame.transparentIndex = transparentIndex;
    return writer_.addFrame(frame, error);
}

bool FLKGIFEncoder::encode(const Rect& rect, const std::uint8_t* rgba, FLKError* error) {
    const bool perFrame = settings_.paletteMode == PaletteMode::PerFrame;
    if (rect.empty()) {
        if (perFrame) return writeUnchangedFrame(0, {FLKGIFColor{}}, error);
        return writeUnchangedFrame(quantizer_.sharedTransparentIndex(), {}, error);
    }
    const bool first = shown_.empty();
    if (first) shown_.assign(static_cast<size_t>(settings_.width) * settings_.height * 4, 0);
    if (!first) crop(shown_, settings_.width, rect, shownCropped_);

    FLKGIFQuantizer::Remapped remapped;
    if (!quantizer_.remap(rgba, first ? nullptr : shownCropped_.data(), rect.width, rect.height, perFrame, remapped)) {
        return fail("The frame's colours could not be reduced.", error);
    }
    // Shrink to the pixels that were not left transparent.
    Rect inner = rect;
    if (!first && remapped.transparentIndex >= 0) {
        int top = rect.height, bottom = -1, left = rect.width, right = -1;
        for (int y = 0; y < rect.height; ++y) {
            const std::uint8_t* row = remapped.indices.data() + static_cast<size_t>(y) * rect.width;
            for (int x = 0; x < rect.width; ++x) {
                if (row[x] == remapped.transparentIndex) continue;
                top = std::min(top, y), bottom = y, left = std::min(left, x), right = std::max(right, x);
            }
        }
        if (bottom < 0) return writeUnchangedFrame(remapped.transparentIndex, perFrame ? remapped.colors : std::vector<FLKGIFColor>{}, error);
        if (top > 0 || left > 0 || bottom < rect.height - 1 || right < rect.width - 1) {
            std::vector<std::uint8_t> indices(static_cast<size_t>(right - left + 1) * (bottom - top + 1));
            for (int y = top; y <= bottom; ++y) {
                std::memcpy(indices.data() + static_cast<size_t>(y - top) * (right - left + 1),
                            remapped.indices.data() + static_cast<size_t>(y) * rect.width + left,
                            static_cast<size_t>(right - left + 1));
            }
            remapped.indices.swap(indices);
            inner = {rect.left + left, rect.top + top, right - left + 1, bottom - top + 1};
        }
    }
    FLKGIFWriter::Frame frame;
    frame.left = inner.left;
    frame.top = inner.top;
    frame.width = inner.width;
    frame.height = inner.height;
    frame.indices = remapped.indices.data();
    if (perFrame) frame.localColors = remapped.colors;
    frame.delayHundredths = delayHundredths(framesWritten_++, settings_.frameDelay);
    frame.transparentIndex = first ? -1 : remapped.transparentIndex;
    if (!writer_.addFrame(frame, error)) return false;
    showOnScreen(inner, remapped);
    return true;
}

void FLKGIFEncoder::showOnScreen(const Rect& rect, const FLKGIFQuantizer::Remapped& remapped) {
    for (int y = 0; y < rect.height; ++y) {
        const std::uint8_t* row = remapped.indices.data() + static_cast<size_t>(y) * rect.width;
        std::uint8_t* out = shown_.data() + (static_cast<size_t>(rect.top + y) * settings_.width + rect.left) * 4;
        for (int x = 0; x < rect.width; ++x, out += 4) {
            if (row[x] == remapped.transparentIndex || row[x] >= remapped.colors.size()) continue;
            const FLKGIFColor& c = remapped.colors[row[x]];
            out[0] = c.r, out[1] = c.g, out[2] = c.b, out[3] = 255;
        }
    }
}

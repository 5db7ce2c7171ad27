#include "core/exporter/FLKGIFQuantizer.h"

#include <libimagequant.h>

#include <algorithm>
#include <climits>

namespace {
constexpr liq_color kTransparent{0, 0, 0, 0};

int distance(const FLKGIFColor& a, const liq_color& b) {
    int dr = a.r - b.r, dg = a.g - b.g, db = a.b - b.b;
    return dr * dr + dg * dg + db * db;
}

void readPalette(const liq_palette* palette, std::vector<FLKGIFColor>& colors, int& transparentIndex) {
    colors.clear();
    transparentIndex = -1;
    for (unsigned i = 0; i < palette->count; ++i) {
        const liq_color& c = palette->entries[i];
        if (c.a == 0 && transparentIndex < 0) transparentIndex = static_cast<int>(i);
        colors.push_back(c.a == 0 ? FLKGIFColor{} : FLKGIFColor{c.r, c.g, c.b});
    }
}
}  // namespace

FLKGIFQuantizer::FLKGIFQuantizer(int speed, float ditherLevel)
    : ditherLevel_(std::clamp(ditherLevel, 0.0f, 1.0f)), attr_(liq_attr_create()) {
    liq_set_speed(attr_, std::clamp(speed, 1, 10));
    liq_set_max_colors(attr_, 256);
}

FLKGIFQuantizer::~FLKGIFQuantizer() {
    if (shared_) liq_result_destroy(shared_);
    if (histogram_) liq_histogram_destroy(histogram_);
    liq_attr_destroy(attr_);
}

bool FLKGIFQuantizer::addToHistogram(const std::uint8_t* rgba, int width, int height) {
    if (!histogram_) histogram_ = liq_histogram_create(attr_);
    if (!histogram_) return false;
    liq_image* image = liq_image_create_rgba(attr_, rgba, width, height, 0);
    if (!image) return false;
    liq_error status = liq_histogram_add_image(histogram_, attr_, image);
    liq_image_destroy(image);
    return status == LIQ_OK;
}

bool FLKGIFQuantizer::buildSharedPalette() {
    if (!histogram_) histogram_ = liq_histogram_create(attr_);
    if (!histogram_ || liq_histogram_add_fixed_color(histogram_, kTransparent, 0) != LIQ_OK) return false;
    if (liq_histogram_quantize(histogram_, attr_, &shared_) != LIQ_OK) return false;
    liq_set_dithering_level(shared_, ditherLevel_);
    readPalette(liq_get_palette(shared_), sharedColors_, sharedTransparentIndex_);
    return sharedTransparentIndex_ >= 0;
}

bool FLKGIFQuantizer::remap(const std::uint8_t* rgba, const std::uint8_t* shown, int width, int height,
                            bool perFramePalette, Remapped& out) {
    if (!perFramePalette) {
        if (!shared_ || !remapWith(shared_, rgba, shown, width, height, out)) return false;
        // Remapping may refine the palette for the image at hand; the file
        // has one table, so indices are translated back onto it.
        if (out.colors == sharedColors_) return true;
        std::vector<std::uint8_t> table(out.colors.size());
        for (size_t i = 0; i < out.colors.size(); ++i) {
            if (static_cast<int>(i) == out.transparentIndex) {
                table[i] = static_cast<std::uint8_t>(sharedTransparentIndex_);
                continue;
            }
            int best = 0, bestDistance = INT_MAX;
            for (size_t j = 0; j < sharedColors_.size(); ++j) {
                if (static_cast<int>(j) == sharedTransparentIndex_) continue;
                const FLKGIFColor& c = sharedColors_[j];
                int d = distance(out.colors[i], liq_color{c.r, c.g, c.b, 255});
                if (d < bestDistance) bestDistance = d, best = static_cast<int>(j);
            }
            table[i] = static_cast<std::uint8_t>(best);
        }
        for (auto& index : out.indices) index = table[index];
        out.colors = sharedColors_;
        out.transparentIndex = sharedTransparentIndex_;
        return true;
    }
    liq_image* image = liq_image_create_rgba(attr_, rgba, width, height, 0);
    if (!image) return false;
    liq_image_add_fixed_color(image, kTransparent);
    liq_result* result = nullptr;
    liq_error status = liq_image_quantize(image, attr_, &result);
    liq_image_destroy(image);
    if (status != LIQ_OK) return false;
    liq_set_dithering_level(result, ditherLevel_);
    bool ok = remapWith(result, rgba, shown, width, height, out);
    liq_result_destroy(result);
    return ok;
}

bool FLKGIFQuantizer::remapWith(liq_result* result, const std::uint8_t* rgba, const std::uint8_t* shown, int width,
                                int height, Remapped& out) {
    liq_image* image = liq_image_create_rgba(attr_, rgba, width, height, 0);
    if (!image) return false;
    if (shown) {
        // On success the image owns the background.
        liq_image* background = liq_image_create_rgba(attr_, shown, width, height, 0);
        if (!background || liq_image_set_background(image, background) != LIQ_OK) {
            if (background) liq_image_destroy(background);
            liq_image_destroy(image);
            return false;
        }
    }
    out.indices.resize(static_cast<size_t>(width) * height);
    liq_error status = liq_write_remapped_image(result, image, out.indices.data(), out.indices.size());
    liq_image_destroy(image);
    if (status != LIQ_OK) return false;
    const liq_palette* palette = liq_get_palette(result);
    readPalette(palette, out.colors, out.transparentIndex);
    // Slower speeds can leave more than one fully transparent entry; one is
    // named in the file, so all of them become that one.
    bool extraTransparent = false;
    for (unsigned i = 0; i < palette->count; ++i) {
        extraTransparent |= palette->entries[i].a == 0 && static_cast<int>(i) != out.transparentIndex;
    }
    if (extraTransparent) {
        for (auto& index : out.indices) {
            if (index < palette->count && palette->entries[index].a == 0) index = static_cast<std::uint8_t>(out.transparentIndex);
        }
    }
    return true;
}

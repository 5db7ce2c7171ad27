#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "core/platform/FLKImage.h"
#include "core/platform/FLKRect.h"

// A straight colour, components 0 ... 1.
struct FLKPaint {
    float red = 0, green = 0, blue = 0, alpha = 1;
    static FLKPaint hex(unsigned rgb, float alpha = 1);
    FLKPaint mixed(const FLKPaint& other, float t) const;
};

// A rounded rectangle as a signed distance field: negative inside, in pixels.
struct FLKRoundedRect {
    FLKRect rect;
    double radius = 0;
    double distance(double x, double y) const;
    FLKRoundedRect inset(double amount) const;
};

// Row-major 3 x 3 projective map of points (x, y, 1).
struct FLKHomography {
    std::array<double, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};
    FLKPoint map(FLKPoint p) const;
    FLKHomography inverse() const;
    // This map applied after `first`.
    FLKHomography after(const FLKHomography& first) const;
};

// Premultiplied floating-point RGBA pixels for drawing device artwork on the
// CPU. Edges are anti-aliased from exact distances, one pixel wide.
class FLKCanvas {
public:
    FLKCanvas(int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }

    // Source-over fill; `shade` gives the colour at a pixel centre.
    template <class Shade>
    void fill(const FLKRoundedRect& shape, Shade shade);
    void fill(const FLKRoundedRect& shape, const FLKPaint& paint) {
        fill(shape, [&](double, double) { return paint; });
    }
    // Source-over fill whose edge fades out over `feather` pixels centred on
    // the outline: soft shadows and glows without a blur pass.
    void fillFeathered(const FLKRoundedRect& shape, const FLKPaint& paint, double feather);
    // A band of `width` just inside the shape's edge.
    template <class Shade>
    void stroke(const FLKRoundedRect& shape, double width, Shade shade);
    // Fills a convex polygon given clockwise or anticlockwise.
    void fillConvex(const std::vector<FLKPoint>& corners, const FLKPaint& paint);
    // Clears what lies inside the shape: the hole the screen shows through.
    void erase(const FLKRoundedRect& shape);

    // Draws `other` (source-over) with its top left at (x, y).
    void draw(const FLKCanvas& other, int x, int y);
    // Draws `source` seen through `sourceToThis`, 4 samples a pixel.
    void drawWarped(const FLKCanvas& source, const FLKHomography& sourceToThis);
    // Puts a blurred, offset copy of `silhouette` (same size) under the
    // content, except where the silhouette itself lies.
    void addShadow(const FLKCanvas& silhouette, double offsetX, double offsetY, int blurRadius, float opacity);
    // The canvas turned a quarter to the left.
    FLKCanvas rotatedLeft() const;
    // Fills everything with a gradient between four corner colours
    // (top left, top right, bottom left, bottom right).
    void fillGradient(const std::array<FLKPaint, 4>& corners);

    // Halves the size `times` times, averaging 2 x 2 blocks.
    FLKCanvas downsampled(int times) const;
    FLKImage image() const;
    float alphaAt(int x, int y) const { return pixels_[index(x, y) + 3]; }

private:
    size_t index(int x, int y) const { return (static_cast<size_t>(y) * width_ + x) * 4; }
    void blend(int x, int y, const FLKPaint& paint, float coverage);
    std::array<float, 4> sample(double x, double y) const;
    std::vector<float> blurredAlpha(int radius) const;

    int width_;
    int height_;
    std::vector<float> pixels_;
};

template <class Shade>
void FLKCanvas::fill(const FLKRoundedRect& shape, Shade shade) {
    const FLKRect& r = shape.rect;
    int x0 = std::max(0, static_cast<int>(r.origin.x) - 1), x1 = std::min(width_, static_cast<int>(r.maxX()) + 2);
    int y0 = std::max(0, static_cast<int>(r.origin.y) - 1), y1 = std::min(height_, static_cast<int>(r.maxY()) + 2);
    for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) {
            double d = shape.distance(x + 0.5, y + 0.5);
            float coverage = static_cast<float>(std::clamp(0.5 - d, 0.0, 1.0));
            if (coverage > 0) blend(x, y, shade(x + 0.5, y + 0.5), coverage);
        }
    }
}

template <class Shade>
void FLKCanvas::stroke(const FLKRoundedRect& shape, double width, Shade shade) {
    FLKRoundedRect inner = shape.inset(width);
    fill(shape, [&](double x, double y) {
        FLKPaint paint = shade(x, y);
        paint.alpha *= static_cast<float>(std::clamp(0.5 + inner.distance(x, y), 0.0, 1.0));
        return paint;
    });
}

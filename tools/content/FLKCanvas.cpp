#include "FLKCanvas.h"

#include <cmath>

FLKPaint FLKPaint::hex(unsigned rgb, float alpha) {
    return {((rgb >> 16) & 0xff) / 255.0f, ((rgb >> 8) & 0xff) / 255.0f, (rgb & 0xff) / 255.0f, alpha};
}

FLKPaint FLKPaint::mixed(const FLKPaint& other, float t) const {
    auto mix = [t](float a, float b) { return a + (b - a) * t; };
    return {mix(red, other.red), mix(green, other.green), mix(blue, other.blue), mix(alpha, other.alpha)};
}

double FLKRoundedRect::distance(double x, double y) const {
    double halfW = rect.size.width / 2, halfH = rect.size.height / 2;
    double r = std::min({radius, halfW, halfH});
    double qx = std::abs(x - (rect.origin.x + halfW)) - halfW + r;
    double qy = std::abs(y - (rect.origin.y + halfH)) - halfH + r;
    return std::hypot(std::max(qx, 0.0), std::max(qy, 0.0)) + std::min(std::max(qx, qy), 0.0) - r;
}

FLKRoundedRect FLKRoundedRect::inset(double amount) const {
    return {FLKRect(rect.origin.x + amount, rect.origin.y + amount, rect.size.width - 2 * amount,
                    rect.size.height - 2 * amount),
            std::max(0.0, radius - amount)};
}

FLKPoint FLKHomography::map(FLKPoint p) const {
    double w = m[6] * p.x + m[7] * p.y + m[8];
    return {(m[0] * p.x + m[1] * p.y + m[2]) / w, (m[3] * p.x + m[4] * p.y + m[5]) / w};
}

FLKHomography FLKHomography::inverse() const {
    const auto& a = m;
    std::array<double, 9> c{a[4] * a[8] - a[5] * a[7], a[2] * a[7] - a[1] * a[8], a[1] * a[5] - a[2] * a[4],
                            a[5] * a[6] - a[3] * a[8], a[0] * a[8] - a[2] * a[6], a[2] * a[3] - a[0] * a[5],
                            a[3] * a[7] - a[4] * a[6], a[1] * a[6] - a[0] * a[7], a[0] * a[4] - a[1] * a[3]};
    double det = a[0] * c[0] + a[1] * c[3] + a[2] * c[6];
    for (double& v : c) v /= det;
    return {c};
}

FLKHomography FLKHomography::after(const FLKHomography& first) const {
    FLKHomography product;
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col) {
            double sum = 0;
            for (int k = 0; k < 3; ++k) sum += m[row * 3 + k] * first.m[k * 3 + col];
            product.m[row * 3 + col] = sum;
        }
    }
    return product;
}

FLKCanvas::FLKCanvas(int width, int height)
    : width_(width), height_(height), pixels_(static_cast<size_t>(width) * height * 4, 0.0f) {}

void FLKCanvas::blend(int x, int y, const FLKPaint& paint, float coverage) {
    float a = paint.alpha * coverage;
    float* p = &pixels_[index(x, y)];
    p[0] = paint.red * a + p[0] * (1 - a);
    p[1] = paint.green * a + p[1] * (1 - a);
    p[2] = paint.blue * a + p[2] * (1 - a);
    p[3] = a + p[3] * (1 - a);
}

void FLKCanvas::fillFeathered(const FLKRoundedRect& shape, const FLKPaint& paint, double feather) {
    feather = std::max(feather, 1.0);
    const FLKRect& r = shape.rect;
    const double reach = feather / 2 + 1;
    int x0 = std::max(0, static_cast<int>(r.origin.x - reach));
    int x1 = std::min(width_, static_cast<int>(r.maxX() + reach) + 1);
    int y0 = std::max(0, static_cast<int>(r.origin.y - reach));
    int y1 = std::min(height_, static_cast<int>(r.maxY() + reach) + 1);
    for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) {
            double t = std::clamp(0.5 - shape.distance(x + 0.5, y + 0.5) / feather, 0.0, 1.0);
            float coverage = static_cast<float>(t * t * (3 - 2 * t));
            if (coverage > 0) blend(x, y, paint, coverage);
        }
    }
}

void FLKCanvas::fillConvex(const std::vector<FLKPoint>& corners, const FLKPaint& paint) {
    double minX = width_, minY = height_, maxX = 0, maxY = 0, area = 0;
    for (size_t i = 0; i < corners.size(); ++i) {
        const auto &a = corners[i], &b = corners[(i + 1) % corners.size()];
        minX = std::min(minX, a.x), maxX = std::max(maxX, a.x), minY = std::min(minY, a.y), maxY = std::max(maxY, a.y);
        area += a.x * b.y - b.x * a.y;
    }
    double winding = area > 0 ? 1 : -1;
    for (int y = std::max(0, int(minY) - 1); y < std::min(height_, int(maxY) + 2); ++y) {
        for (int x = std::max(0, int(minX) - 1); x < std::min(width_, int(maxX) + 2); ++x) {
            double d = -1e9;
            for (size_t i = 0; i < corners.size(); ++i) {
                const auto &a = corners[i], &b = corners[(i + 1) % corners.size()];
                double ex = b.x - a.x, ey = b.y - a.y, len = std::hypot(ex, ey);
                d = std::max(d, winding * ((x + 0.5 - a.x) * ey - (y + 0.5 - a.y) * ex) / len);
            }
            float coverage = static_cast<float>(std::clamp(0.5 - d, 0.0, 1.0));
            if (coverage > 0) blend(x, y, paint, coverage);
        }
    }
}

void FLKCanvas::erase(const FLKRoundedRect& shape) {
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            float keep = static_cast<float>(std::clamp(0.5 + shape.distance(x + 0.5, y + 0.5), 0.0, 1.0));
            for (int c = 0; c < 4; ++c) pixels_[index(x, y) + c] *= keep;
        }
    }
}

void FLKCanvas::draw(const FLKCanvas& other, int x, int y) {
    for (int sy = 0; sy < other.height_; ++sy) {
        for (int sx = 0; sx < other.width_; ++sx) {
            int dx = x + sx, dy = y + sy;
            if (dx < 0 || dy < 0 || dx >= width_ || dy >= height_) continue;
            const float* s = &other.pixels_[other.index(sx, sy)];
            float* d = &pixels_[index(dx, dy)];
            for (int c = 0; c < 4; ++c) d[c] = s[c] + d[c] * (1 - s[3]);
        }
    }
}

std::array<float, 4> FLKCanvas::sample(double x, double y) const {
    x -= 0.5, y -= 0.5;
    int x0 = static_cast<int>(std::floor(x)), y0 = static_cast<int>(std::floor(y));
    double fx = x - x0, fy = y - y0;
    std::array<float, 4> out{};
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 2; ++i) {
            int sx = x0 + i, sy = y0 + j;
            if (sx < 0 || sy < 0 || sx >= width_ || sy >= height_) continue;
            float w = static_cast<float>((i ? fx : 1 - fx) * (j ? fy : 1 - fy));
            for (int c = 0; c < 4; ++c) out[c] += w * pixels_[index(sx, sy) + c];
        }
    }
    return out;
}

void FLKCanvas::drawWarped(const FLKCanvas& source, const FLKHomography& sourceToThis) {
    FLKHomography back = sourceToThis.inverse();
    static constexpr double kOffsets[4][2] = {{0.25, 0.25}, {0.75, 0.25}, {0.25, 0.75}, {0.75, 0.75}};
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            std::array<float, 4> sum{};
            for (const auto& o : kOffsets) {
                FLKPoint p = back.map({x + o[0], y + o[1]});
                auto s = source.sample(p.x, p.y);
                for (int c = 0; c < 4; ++c) sum[c] += s[c] / 4;
            }
            float* d = &pixels_[index(x, y)];
            for (int c = 0; c < 4; ++c) d[c] = sum[c] + d[c] * (1 - sum[3]);
        }
    }
}

std::vector<float> FLKCanvas::blurredAlpha(int radius) const {
    std::vector<float> a(static_cast<size_t>(width_) * height_), tmp(a.size());
    for (size_t i = 0; i < a.size(); ++i) a[i] = pixels_[i * 4 + 3];
    // Three box passes each way come close to a Gaussian.
    auto pass = [&](const std::vector<float>& in, std::vector<float>& out, int count, int stride, int lines,
                    int lineStride) {
        for (int line = 0; line < lines; ++line) {
            const size_t base = static_cast<size_t>(line) * lineStride;
            double sum = 0;
            for (int i = -radius; i <= radius; ++i) sum += (i >= 0 && i < count) ? in[base + size_t(i) * stride] : 0;
            for (int i = 0; i < count; ++i) {
                out[base + size_t(i) * stride] = static_cast<float>(sum / (2 * radius + 1));
                int add = i + radius + 1, drop = i - radius;
                if (add < count) sum += in[base + size_t(add) * stride];
                if (drop >= 0) sum -= in[base + size_t(drop) * stride];
            }
        }
    };
    for (int k = 0; k < 3; ++k) {
        pass(a, tmp, width_, 1, height_, width_);
        pass(tmp, a, height_, width_, width_, 1);
    }
    return a;
}

void FLKCanvas::addShadow(const FLKCanvas& silhouette, double offsetX, double offsetY, int blurRadius,
                          float opacity) {
    auto shadow = silhouette.blurredAlpha(blurRadius);
    FLKCanvas under(width_, height_);
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            int sx = static_cast<int>(std::lround(x - offsetX)), sy = static_cast<int>(std::lround(y - offsetY));
            if (sx < 0 || sy < 0 || sx >= width_ || sy >= height_) continue;
            float outside = 1 - silhouette.alphaAt(x, y);
            under.pixels_[index(x, y) + 3] = shadow[static_cast<size_t>(sy) * width_ + sx] * opacity * outside;
        }
    }
    under.draw(*this, 0, 0);
    pixels_ = std::move(under.pixels_);
}

FLKCanvas FLKCanvas::rotatedLeft() const {
    FLKCanvas turned(height_, width_);
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            std::copy_n(&pixels_[index(x, y)], 4, &turned.pixels_[turned.index(y, width_ - 1 - x)]);
        }
    }
    return turned;
}

void FLKCanvas::fillGradient(const std::array<FLKPaint, 4>& corners) {
    for (int y = 0; y < height_; ++y) {
        float v = (y + 0.5f) / height_;
        FLKPaint left = corners[0].mixed(corners[2], v), right = corners[1].mixed(corners[3], v);
        for (int x = 0; x < width_; ++x) blend(x, y, left.mixed(right, (x + 0.5f) / width_), 1);
    }
}

FLKCanvas FLKCanvas::downsampled(int times) const {
    if (times <= 0) return *this;
    FLKCanvas half(width_ / 2, height_ / 2);
    for (int y = 0; y < half.height_; ++y) {
        for (int x = 0; x < half.width_; ++x) {
            for (int c = 0; c < 4; ++c) {
                half.pixels_[half.index(x, y) + c] =
                    (pixels_[index(2 * x, 2 * y) + c] + pixels_[index(2 * x + 1, 2 * y) + c] +
                     pixels_[index(2 * x, 2 * y + 1) + c] + pixels_[index(2 * x + 1, 2 * y + 1) + c]) / 4;
            }
        }
    }
    return half.downsampled(times - 1);
}

FLKImage FLKCanvas::image() const {
    FLKImage image(width_, height_);
    for (size_t i = 0; i < static_cast<size_t>(width_) * height_; ++i) {
        float a = pixels_[i * 4 + 3];
        for (int c = 0; c < 3; ++c) {
            float straight = a > 0 ? pixels_[i * 4 + c] / a : 0;
            image.rgba[i * 4 + c] = static_cast<uint8_t>(std::lround(std::clamp(straight, 0.0f, 1.0f) * 255));
        }
        image.rgba[i * 4 + 3] = static_cast<uint8_t>(std::lround(std::clamp(a, 0.0f, 1.0f) * 255));
    }
    return image;
}

#include "FLKTutorialArtwork.h"

#include <vector>

#include "FLKBarLettering.h"

namespace flk::tutorial {
namespace {
FLKRoundedRect roundRect(double x, double y, double w, double h, double r) { return {FLKRect(x, y, w, h), r}; }

// Draws `shape` with a soft drop shadow below it.
template <class Draw>
FLKCanvas withShadow(int width, int height, Draw draw, double drop = 8, int blur = 10, float opacity = 0.35f) {
    FLKCanvas canvas(width + 2 * kShadowMargin, height + 2 * kShadowMargin);
    draw(canvas, static_cast<double>(kShadowMargin));
    canvas.addShadow(canvas, 0, drop, blur, opacity);
    return canvas;
}
}  // namespace

FLKCanvas drawPhone() {
    const double w = kPhoneWidth, h = kPhoneHeight, inset = kScreenInset;
    FLKCanvas canvas = withShadow(kPhoneWidth, kPhoneHeight, [&](FLKCanvas& c, double m) {
        // Side buttons first, so the body covers their inner half.
        FLKPaint button = FLKPaint::hex(0x3b3d45);
        c.fill(roundRect(m - 3, m + 96, 6, 34, 2), button);
        c.fill(roundRect(m - 3, m + 140, 6, 52, 2), button);
        c.fill(roundRect(m + w - 3, m + 120, 6, 70, 2), button);
        FLKRoundedRect body = roundRect(m, m, w, h, 38);
        c.fill(body, [&](double x, double y) {
            float t = static_cast<float>(((x - m) / w + (y - m) / h) / 2);
            return FLKPaint::hex(0x4a4d57).mixed(FLKPaint::hex(0x1d1f25), t);
        });
        c.stroke(body, 2, [](double, double) { return FLKPaint::hex(0x8a8f9c, 0.8f); });
        c.fill(roundRect(m + inset - 2, m + inset - 2, w - 2 * inset + 4, h - 2 * inset + 4, 31),
               FLKPaint::hex(0x0c0d10));
    });
    const double m = kShadowMargin;
    canvas.erase(roundRect(m + inset, m + inset, w - 2 * inset, h - 2 * inset, 29));
    // The camera punches through the screen.
    canvas.fill(roundRect(m + w / 2 - 6, m + inset + 8, 12, 12, 6), FLKPaint::hex(0x0c0d10));
    canvas.fill(roundRect(m + w / 2 - 2.5, m + inset + 11.5, 5, 5, 2.5), FLKPaint::hex(0x2a3550));
    return canvas;
}

FLKCanvas drawRecordingFile() {
    const double w = 112, h = 140, fold = 30;
    return withShadow(112, 140, [&](FLKCanvas& c, double m) {
        FLKPaint page = FLKPaint::hex(0xffffff);
        c.fill(roundRect(m, m, w - fold, h, 12), page);
        c.fill(roundRect(m, m + fold, w, h - fold, 12), page);
        c.fillConvex({{m + w - fold - 12, m},
                      {m + w - fold, m},
                      {m + w, m + fold},
                      {m + w, m + fold + 12},
                      {m + w - fold - 12, m + fold + 12}},
                     page);
        c.fillConvex({{m + w - fold, m}, {m + w, m + fold}, {m + w - fold + 4, m + fold}}, FLKPaint::hex(0xd9dcf0));
        // The video's first frame with a play button.
        FLKRoundedRect thumb = roundRect(m + 14, m + 38, w - 28, 58, 8);
        c.fill(thumb, [&](double x, double) {
            return FLKPaint::hex(0x6366f1).mixed(FLKPaint::hex(0xec4899), static_cast<float>((x - m) / w));
        });
        double cx = m + w / 2, cy = m + 67;
        c.fill(roundRect(cx - 15, cy - 15, 30, 30, 15), FLKPaint::hex(0xffffff, 0.95f));
        c.fillConvex({{cx - 5, cy - 8}, {cx + 9, cy}, {cx - 5, cy + 8}}, FLKPaint::hex(0x4f46e5));
        c.fill(roundRect(m + 14, m + 108, 60, 8, 4), FLKPaint::hex(0x23263a, 0.8f));
        c.fill(roundRect(m + 14, m + 122, 40, 6, 3), FLKPaint::hex(0x9aa0b6, 0.8f));
        // Recording light.
        c.fill(roundRect(m + 14, m + 14, 12, 12, 6), FLKPaint::hex(0xef4444));
        FLKBarLettering(2).draw(c, "REC", m + 32, m + 13, FLKPaint::hex(0x23263a, 0.85f));
    });
}

FLKCanvas drawChevron() {
    FLKCanvas canvas(48, 64);
    FLKPaint white = FLKPaint::hex(0xffffff, 0.95f);
    FLKBarLettering::drawStroke(canvas, {14, 10}, {34, 32}, 10, white);
    FLKBarLettering::drawStroke(canvas, {34, 32}, {14, 54}, 10, white);
    return canvas;
}

FLKCanvas drawFormatBadge(std::string_view format, unsigned accent) {
    const double w = 188, h = 84;
    return withShadow(
        188, 84,
        [&](FLKCanvas& c, double m) {
            c.fill(roundRect(m, m, w, h, 22), FLKPaint::hex(0xffffff));
            double cx = m + 42, cy = m + h / 2;
            c.fill(roundRect(cx - 26, cy - 26, 52, 52, 16), [&](double x, double y) {
                return FLKPaint::hex(accent).mixed(FLKPaint::hex(0x23263a),
                                                   static_cast<float>((x - cx + y - cy) / 200 + 0.1));
            });
            FLKPaint white = FLKPaint::hex(0xffffff);
            if (format == "GIF") {
                // A loop: a ring with an arrowhead, for an animation that repeats.
                c.stroke(roundRect(cx - 13, cy - 13, 26, 26, 13), 3.5, [&](double, double) { return white; });
                c.fillConvex({{cx - 1, cy - 21}, {cx + 9, cy - 13}, {cx - 1, cy - 5}}, white);
            } else {
                // A film frame with perforations.
                c.stroke(roundRect(cx - 15, cy - 12, 30, 24, 4), 3, [&](double, double) { return white; });
                for (int i = 0; i < 3; ++i) {
                    c.fill(roundRect(cx - 9 + i * 7, cy - 17, 4, 4, 1), white);
                    c.fill(roundRect(cx - 9 + i * 7, cy + 13, 4, 4, 1), white);
                }
            }
            FLKBarLettering letters(7);
            letters.draw(c, format, m + 82, cy - letters.height() / 2, FLKPaint::hex(0x23263a));
        },
        6, 8, 0.3f);
}

std::shared_ptr<FLKGPUTexture> textureOf(const FLKCanvas& canvas) {
    FLKImage image = canvas.image();
    for (size_t i = 0; i < image.rgba.size(); i += 4) {
        unsigned a = image.rgba[i + 3];
        for (int c = 0; c < 3; ++c) image.rgba[i + c] = static_cast<uint8_t>((image.rgba[i + c] * a + 127) / 255);
    }
    return std::make_shared<FLKGPUTexture>(image.width, image.height, FLKPixelFormat::RGBA8, std::move(image.rgba));
}

}  // namespace flk::tutorial

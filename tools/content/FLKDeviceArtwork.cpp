#include "FLKDeviceArtwork.h"

#include <cmath>

namespace {

// Lengths of a device at scale 1, in scene units.
struct DeviceGeometry {
    double screenWidth, screenHeight, screenRadius;
    double bezelSide, bezelTop, bezelBottom, rim, bodyRadius;
    unsigned rimTop, rimBottom;
};

DeviceGeometry geometryOf(FLKDeviceKind kind) {
    switch (kind) {
        case FLKDeviceKind::phone: return {600, 1300, 78, 16, 16, 16, 7, 101, 0x5c5d63, 0x2b2c30};
        case FLKDeviceKind::tablet: return {840, 1120, 30, 40, 40, 40, 6, 72, 0x74777f, 0x44464c};
        case FLKDeviceKind::laptop: return {1120, 700, 10, 20, 28, 30, 4, 24, 0xc3c7cf, 0x8d9199};
    }
    return {};
}

FLKRoundedRect scaled(double x, double y, double w, double h, double r, double s) {
    return {FLKRect(x * s, y * s, w * s, h * s), r * s};
}

// Edge buttons poke out of the frame by this much.
constexpr double kButtonReach = 4;
constexpr double kBaseHeight = 24;

void drawButtons(FLKCanvas& canvas, FLKDeviceKind kind, const FLKRect& body, double s, const FLKPaint& paint) {
    auto side = [&](bool right, double top, double length) {
        double x = right ? body.maxX() / s - 2 : body.origin.x / s - kButtonReach;
        canvas.fill(scaled(x, body.origin.y / s + top, kButtonReach + 2, length, 2.5, s), paint);
    };
    if (kind == FLKDeviceKind::phone) {
        side(false, 230, 56), side(false, 340, 96), side(false, 456, 96), side(true, 380, 150);
    } else if (kind == FLKDeviceKind::tablet) {
        side(true, 90, 70), side(true, 172, 70);
        canvas.fill(scaled(body.maxX() / s - 190, body.origin.y / s - kButtonReach, 90, kButtonReach + 2, 2.5, s),
                    paint);
    }
}

void drawLens(FLKCanvas& canvas, double cx, double cy, double radius, double s) {
    canvas.fill(scaled(cx - radius, cy - radius, 2 * radius, 2 * radius, radius, s), FLKPaint::hex(0x141a29));
    double r = radius * 0.45;
    canvas.fill(scaled(cx - r, cy - r, 2 * r, 2 * r, r, s), FLKPaint::hex(0x2a3550));
    double glint = radius * 0.22;
    canvas.fill(scaled(cx - radius * 0.2 - glint, cy - radius * 0.25 - glint, 2 * glint, 2 * glint, glint, s),
                FLKPaint::hex(0x8fa3c8, 0.7f));
}

void drawLaptopBase(FLKCanvas& canvas, const FLKRect& lid, double s) {
    double lidX = lid.origin.x / s, lidW = lid.size.width / s, bottom = lid.maxY() / s;
    double baseW = lidW * 1.16, baseX = lidX - (baseW - lidW) / 2;
    canvas.fill(scaled(lidX + 40, bottom - 2, lidW - 80, 8, 2, s), FLKPaint::hex(0x2a2b2e));
    FLKRoundedRect base = scaled(baseX, bottom + 4, baseW, kBaseHeight - 4, 10, s);
    const double top = base.rect.origin.y, height = base.rect.size.height;
    canvas.fill(base, [&](double, double y) {
        return FLKPaint::hex(0xe4e6ea).mixed(FLKPaint::hex(0x7d8189), static_cast<float>((y - top) / height));
    });
    canvas.fill(scaled(baseX, bottom + 4, baseW, 5, 2, s), FLKPaint::hex(0xf4f5f7));
    canvas.fill(scaled(lidX + lidW / 2 - 110, bottom + 4, 220, 8, 4, s), FLKPaint::hex(0xa9adb5));
}

}  // namespace

FLKDeviceArtwork FLKDeviceArtwork::draw(FLKDeviceKind kind, double s, int margin) {
    const DeviceGeometry g = geometryOf(kind);
    const double frame = g.rim;
    const double bodyW = g.screenWidth + 2 * (g.bezelSide + frame);
    const double bodyH = g.screenHeight + g.bezelTop + g.bezelBottom + 2 * frame;
    const double baseExtra = kind == FLKDeviceKind::laptop ? kBaseHeight : 0;
    const double sideExtra = kind == FLKDeviceKind::laptop ? std::round(bodyW * 0.08) : kButtonReach;
    const int width = static_cast<int>(std::ceil((bodyW + 2 * sideExtra) * s)) + 2 * margin;
    const int height = static_cast<int>(std::ceil((bodyH + baseExtra + 2 * kButtonReach) * s)) + 2 * margin;

    FLKDeviceArtwork out{FLKCanvas(width, height), FLKCanvas(width, height), {}};
    FLKCanvas& canvas = out.artwork;
    const double x0 = margin / s + sideExtra, y0 = margin / s + kButtonReach;
    const FLKRoundedRect body = scaled(x0, y0, bodyW, bodyH, g.bodyRadius, s);
    const FLKPaint rimTop = FLKPaint::hex(g.rimTop), rimBottom = FLKPaint::hex(g.rimBottom);
    const double bodyTop = body.rect.origin.y, bodyHeight = body.rect.size.height;
    auto along = [&](double y) { return static_cast<float>(std::clamp((y - bodyTop) / bodyHeight, 0.0, 1.0)); };

    drawButtons(canvas, kind, body.rect, s, rimBottom.mixed(rimTop, 0.35f));
    canvas.fill(body, [&](double, double y) { return rimTop.mixed(rimBottom, along(y)); });
    canvas.stroke(body, 1.6 * s, [&](double, double y) {
        return FLKPaint{1, 1, 1, 0.55f - 0.4f * along(y)};
    });
    const FLKRoundedRect bezel = body.inset(frame * s);
    canvas.fill(bezel, FLKPaint::hex(0x060607));
    canvas.stroke(bezel, 1.2 * s, [](double, double) { return FLKPaint{1, 1, 1, 0.07f}; });
    if (kind == FLKDeviceKind::laptop) drawLaptopBase(canvas, body.rect, s);

    out.silhouette = canvas;
    out.screen = scaled(x0 + frame + g.bezelSide, y0 + frame + g.bezelTop, g.screenWidth, g.screenHeight,
                        g.screenRadius, s);
    canvas.erase(out.screen);

    const double centerX = x0 + bodyW / 2;
    if (kind == FLKDeviceKind::phone) {
        // The camera island floats over the top of the screen.
        const double islandY = y0 + frame + g.bezelTop + 20;
        canvas.fill(scaled(centerX - 63, islandY, 126, 37, 18.5, s), FLKPaint::hex(0x000000));
        drawLens(canvas, centerX + 40, islandY + 18.5, 8, s);
    } else {
        drawLens(canvas, centerX, y0 + frame + g.bezelTop / 2, kind == FLKDeviceKind::laptop ? 4.5 : 6, s);
    }
    return out;
}

FLKDeviceArtwork FLKDeviceArtwork::turnedLeft() const {
    const FLKRect& r = screen.rect;
    FLKRect turnedScreen(r.origin.y, artwork.width() - r.maxX(), r.size.height, r.size.width);
    return {artwork.rotatedLeft(), silhouette.rotatedLeft(), {turnedScreen, screen.radius}};
}

void FLKDeviceArtwork::addShadow(double s) {
    // A tight contact shadow and a wide, soft one further down.
    artwork.addShadow(silhouette, 0, 6 * s, static_cast<int>(5 * s), 0.32f);
    artwork.addShadow(silhouette, 0, 36 * s, static_cast<int>(26 * s), 0.34f);
}

void flkDrawScreenPlaceholder(FLKCanvas& canvas, const FLKRoundedRect& screen, const FLKPaint& accent) {
    const FLKRect& r = screen.rect;
    const double x = r.origin.x, y = r.origin.y, w = r.size.width, h = r.size.height;
    const double unit = std::min(w, h);
    canvas.fill(screen, [&](double, double py) {
        return accent.mixed(FLKPaint::hex(0x0f172a), static_cast<float>(0.35 * (py - y) / h));
    });
    const double header = std::min(0.24 * h, 0.5 * unit);
    canvas.fill({FLKRect(x + 0.08 * w, y + 0.34 * header, 0.46 * w, 0.15 * header), 0.075 * header},
                FLKPaint{1, 1, 1, 0.95f});
    canvas.fill({FLKRect(x + 0.08 * w, y + 0.6 * header, 0.3 * w, 0.1 * header), 0.05 * header},
                FLKPaint{1, 1, 1, 0.6f});
    const double sheetTop = y + header;
    canvas.fill({FLKRect(x, sheetTop, w, y + h - sheetTop), std::max(screen.radius, 0.06 * unit)},
                FLKPaint::hex(0xf3f5f9));
    canvas.fill({FLKRect(x, sheetTop + 0.1 * unit, w, y + h - sheetTop - 0.1 * unit), screen.radius},
                FLKPaint::hex(0xf3f5f9));
    const double pad = 0.06 * unit, cardH = 0.2 * unit;
    for (double top = sheetTop + pad; top + cardH < y + h - pad; top += cardH + pad * 0.6) {
        FLKRoundedRect card{FLKRect(x + pad, top, w - 2 * pad, cardH), 0.04 * unit};
        canvas.fill(card, FLKPaint::hex(0xffffff));
        canvas.stroke(card, std::max(1.0, 0.003 * unit), [](double, double) { return FLKPaint::hex(0xdfe3ea); });
        const double icon = cardH * 0.56, iconY = top + (cardH - icon) / 2;
        canvas.fill({FLKRect(x + pad * 1.5, iconY, icon, icon), icon * 0.28}, accent.mixed(FLKPaint::hex(0xffffff), 0.55f));
        const double textX = x + pad * 1.5 + icon + pad * 0.6;
        const double textW = std::max(0.0, x + w - pad * 2.2 - textX);
        canvas.fill({FLKRect(textX, iconY + icon * 0.12, textW * 0.8, icon * 0.22), icon * 0.11},
                    FLKPaint::hex(0x334155, 0.85f));
        canvas.fill({FLKRect(textX, iconY + icon * 0.6, textW * 0.55, icon * 0.18), icon * 0.09},
                    FLKPaint::hex(0x94a3b8, 0.8f));
    }
}

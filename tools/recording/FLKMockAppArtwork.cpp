#include "FLKMockAppArtwork.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "FLKBarLettering.h"

using flk::recording::accentPair;
using namespace flk::recording;

namespace {

// Tall content is drawn in bands so that the float canvas stays small.
constexpr int kBandHeight = 256;

FLKRoundedRect roundRect(double x, double y, double w, double h, double r) { return {FLKRect(x, y, w, h), r}; }
FLKRoundedRect circle(double cx, double cy, double radius) {
    return {FLKRect(cx - radius, cy - radius, 2 * radius, 2 * radius), radius};
}
// A text line: a bar with fully rounded ends.
void textBar(FLKCanvas& canvas, double x, double y, double w, double h, const FLKPaint& paint) {
    canvas.fill(roundRect(x, y, w, h, h / 2), paint);
}

template <class Painter>
FLKFrameLayer drawTall(int width, int height, const FLKPaint& background, Painter paint) {
    FLKFrameLayer layer(width, height);
    for (int top = 0; top < height; top += kBandHeight) {
        FLKCanvas band(width, std::min(kBandHeight, height - top));
        band.fill(roundRect(0, 0, width, band.height(), 0), background);
        paint(band, static_cast<double>(top));
        layer.paste(band, 0, top);
    }
    return layer;
}

FLKFrameLayer drawFlat(int width, int height, const FLKPaint& background, auto paint) {
    FLKCanvas canvas(width, height);
    canvas.fill(roundRect(0, 0, width, height, 0), background);
    paint(canvas);
    return FLKFrameLayer::fromCanvas(canvas);
}

// Coverage of a convex polygon at a point, anti-aliased over one pixel.
double convexCoverage(const std::vector<FLKPoint>& corners, double x, double y) {
    double area = 0, d = -1e9;
    for (size_t i = 0; i < corners.size(); ++i) {
        const auto &a = corners[i], &b = corners[(i + 1) % corners.size()];
        area += a.x * b.y - b.x * a.y;
    }
    double winding = area > 0 ? 1 : -1;
    for (size_t i = 0; i < corners.size(); ++i) {
        const auto &a = corners[i], &b = corners[(i + 1) % corners.size()];
        double ex = b.x - a.x, ey = b.y - a.y;
        d = std::max(d, winding * ((x - a.x) * ey - (y - a.y) * ex) / std::hypot(ex, ey));
    }
    return std::clamp(0.5 - d, 0.0, 1.0);
}

// A landscape picture (sky, sun, two hills) inside `clip`, limited to the
// rows above `bottom`.
void drawPhoto(FLKCanvas& canvas, const FLKRoundedRect& clip, double bottom, int accent) {
    const FLKRect& r = clip.rect;
    auto [light, deep] = accentPair(accent);
    FLKPaint sky = light.mixed(FLKPaint::hex(0xffffff), 0.35f);
    auto rowLimit = [bottom](double y) { return static_cast<float>(std::clamp(bottom - y + 0.5, 0.0, 1.0)); };
    canvas.fill(clip, [&](double, double y) {
        FLKPaint p = sky.mixed(light, static_cast<float>((y - r.origin.y) / (bottom - r.origin.y)));
        p.alpha *= rowLimit(y);
        return p;
    });
    double h = bottom - r.origin.y, w = r.size.width;
    double sunRadius = h * 0.14;
    canvas.fill(circle(r.origin.x + w * 0.74, r.origin.y + h * 0.3, sunRadius), FLKPaint::hex(0xffffff, 0.85f));
    auto hill = [&](std::vector<FLKPoint> corners, FLKPaint paint) {
        canvas.fill(clip, [&](double x, double y) {
            FLKPaint p = paint;
            p.alpha *= static_cast<float>(convexCoverage(corners, x, y)) * rowLimit(y);
            return p;
        });
    };
    double base = bottom + 2;
    hill({{r.origin.x + w * 0.35, r.origin.y + h * 0.38}, {r.origin.x + w * 0.85, base}, {r.origin.x - w * 0.15, base}},
         deep.mixed(light, 0.35f));
    hill({{r.origin.x + w * 0.72, r.origin.y + h * 0.55}, {r.origin.x + w * 1.15, base}, {r.origin.x + w * 0.3, base}},
         deep);
}

void drawAvatar(FLKCanvas& canvas, double cx, double cy, double radius, int accent) {
    auto [light, deep] = accentPair(accent);
    FLKRoundedRect disc = circle(cx, cy, radius);
    canvas.fill(disc, [&](double x, double y) {
        return light.mixed(deep, static_cast<float>(std::clamp((x - cx + y - cy) / (4 * radius) + 0.5, 0.0, 1.0)));
    });
    FLKPaint figure = FLKPaint::hex(0xffffff, 0.92f);
    canvas.fill(circle(cx, cy - radius * 0.2, radius * 0.32), figure);
    // Shoulders: a rounded block cut off by the disc.
    FLKRoundedRect shoulders = roundRect(cx - radius * 0.62, cy + radius * 0.28, radius * 1.24, radius, radius * 0.5);
    canvas.fill(shoulders, [&](double x, double y) {
        FLKPaint p = figure;
        p.alpha *= static_cast<float>(std::clamp(0.5 - disc.distance(x, y), 0.0, 1.0));
        return p;
    });
}

void drawSearchIcon(FLKCanvas& canvas, double cx, double cy, double size, const FLKPaint& paint) {
    double r = size * 0.3, width = size * 0.1;
    canvas.stroke(circle(cx - size * 0.08, cy - size * 0.08, r), width, [&](double, double) { return paint; });
    FLKBarLettering::drawStroke(canvas, {cx + size * 0.14, cy + size * 0.14}, {cx + size * 0.36, cy + size * 0.36},
                                width, paint);
}

void drawTabIcon(FLKCanvas& canvas, int tab, double cx, double cy, double size, const FLKPaint& paint,
                 const FLKPaint& background) {
    double s = size / 2;
    switch (tab) {
        case 0:  // home
            canvas.fillConvex({{cx, cy - s},
                               {cx + s, cy - s * 0.1},
                               {cx + s * 0.8, cy + s},
                               {cx - s * 0.8, cy + s},
                               {cx - s, cy - s * 0.1}},
                              paint);
            canvas.fill(roundRect(cx - s * 0.22, cy + s * 0.3, s * 0.44, s * 0.8, s * 0.12), background);
            break;
        case 1:  // explore
            canvas.stroke(circle(cx, cy, s), s * 0.2, [&](double, double) { return paint; });
            canvas.fillConvex({{cx + s * 0.45, cy - s * 0.45},
                               {cx + s * 0.15, cy + s * 0.15},
                               {cx - s * 0.45, cy + s * 0.45},
                               {cx - s * 0.15, cy - s * 0.15}},
                              paint);
            break;
        case 2:  // favourites
            canvas.fill(circle(cx - s * 0.45, cy - s * 0.3, s * 0.5), paint);
            canvas.fill(circle(cx + s * 0.45, cy - s * 0.3, s * 0.5), paint);
            canvas.fillConvex({{cx - s * 0.93, cy - s * 0.12}, {cx + s * 0.93, cy - s * 0.12}, {cx, cy + s * 0.9}},
                              paint);
            break;
        default: {  // profile
            canvas.fill(circle(cx, cy - s * 0.4, s * 0.45), paint);
            FLKRoundedRect body = roundRect(cx - s * 0.85, cy + s * 0.2, s * 1.7, s * 1.4, s * 0.7);
            double bottom = cy + s;
            canvas.fill(body, [&](double, double y) {
                FLKPaint p = paint;
                p.alpha *= static_cast<float>(std::clamp(bottom - y + 0.5, 0.0, 1.0));
                return p;
            });
        }
    }
}

}  // namespace

namespace flk::recording {
std::array<FLKPaint, 2> accentPair(int index) {
    static constexpr unsigned kPairs[][2] = {{0xff9a8b, 0xff5f7e}, {0xffd36e, 0xf59e0b}, {0x6ee7df, 0x0f9f98},
                                             {0x93c5fd, 0x4d6cfa}, {0xc4b5fd, 0x8b5cf6}, {0xf9a8d4, 0xe83e8c},
                                             {0xa7e77a, 0x22a86a}};
    constexpr int count = sizeof kPairs / sizeof kPairs[0];
    const auto& pair = kPairs[((index % count) + count) % count];
    return {FLKPaint::hex(pair[0]), FLKPaint::hex(pair[1])};
}
}  // namespace flk::recording

FLKMockAppArtwork::FLKMockAppArtwork(const FLKMockAppLayout& layout, int detailCard) : layout_(layout) {
    statusBar_ = drawStatusBar();
    for (auto page : {FLKMockPage::list, FLKMockPage::detail, FLKMockPage::explore})
        appBars_[static_cast<size_t>(page)] = drawAppBar(page);
    tabBars_ = {drawTabBar(0), drawTabBar(1)};
    contents_[0] = drawList();
    contents_[1] = drawDetail(layout.cards().at(static_cast<size_t>(detailCard)));
    contents_[2] = drawExplore();
}

FLKFrameLayer FLKMockAppArtwork::drawStatusBar() const {
    const auto& l = layout_;
    return drawFlat(l.width(), l.statusBarHeight(), FLKPaint::hex(kPrimaryDark), [&](FLKCanvas& c) {
        FLKPaint white = FLKPaint::hex(0xffffff);
        FLKBarLettering digits(l.px(1.7));
        double mid = l.statusBarHeight() / 2.0;
        digits.draw(c, "9:41", l.px(16), mid - digits.height() / 2, white);
        double right = l.width() - l.px(16);
        // Battery: outline, charge and cap.
        double bw = l.px(22), bh = l.px(11), bx = right - bw - l.px(2), by = mid - bh / 2;
        c.stroke(roundRect(bx, by, bw, bh, l.px(3)), l.px(1.2), [&](double, double) { return white; });
        c.fill(roundRect(bx + l.px(2.2), by + l.px(2.2), (bw - l.px(4.4)) * 0.75, bh - l.px(4.4), l.px(1.5)), white);
        c.fill(roundRect(right - l.px(2), mid - l.px(2.5), l.px(2), l.px(5), l.px(1)), white);
        // Signal strength, four rising bars.
        for (int i = 0; i < 4; ++i) {
            double h = l.px(4 + 2.3 * i), x = bx - l.px(28) + i * l.px(5);
            c.fill(roundRect(x, mid + l.px(5.5) - h, l.px(3), h, l.px(1)), white);
        }
        // Wi-Fi as a wedge.
        double wx = bx - l.px(40);
        c.fillConvex({{wx - l.px(7), mid - l.px(4)}, {wx + l.px(7), mid - l.px(4)}, {wx, mid + l.px(5)}},
                     FLKPaint::hex(0xffffff, 0.95f));
    });
}

FLKFrameLayer FLKMockAppArtwork::drawAppBar(FLKMockPage page) const {
    const auto& l = layout_;
    return drawFlat(l.width(), l.appBarHeight(), FLKPaint::hex(kPrimary), [&](FLKCanvas& c) {
        FLKPaint white = FLKPaint::hex(0xffffff);
        double mid = l.appBarHeight() / 2.0, right = l.width() - l.px(16);
        if (page == FLKMockPage::detail) {
            FLKBarLettering::drawStroke(c, {l.px(22), mid}, {l.px(31), mid - l.px(9)}, l.px(2.4), white);
            FLKBarLettering::drawStroke(c, {l.px(22), mid}, {l.px(31), mid + l.px(9)}, l.px(2.4), white);
            textBar(c, l.px(56), mid - l.px(5.5), l.px(96), l.px(11), FLKPaint::hex(0xffffff, 0.95f));
            for (int i = -1; i <= 1; ++i) c.fill(circle(right - l.px(6), mid + i * l.px(6), l.px(2)), white);
            return;
        }
        if (page == FLKMockPage::list) {
            for (int i = -1; i <= 1; ++i)
                textBar(c, l.px(16), mid + i * l.px(6) - l.px(1.1), l.px(18), l.px(2.2), white);
            textBar(c, l.px(56), mid - l.px(5.5), l.px(112), l.px(11), FLKPaint::hex(0xffffff, 0.95f));
            drawAvatar(c, right - l.px(15), mid, l.px(15), 1);
            drawSearchIcon(c, right - l.px(58), mid, l.px(24), white);
        } else {
            textBar(c, l.px(16), mid - l.px(5.5), l.px(84), l.px(11), FLKPaint::hex(0xffffff, 0.95f));
            drawSearchIcon(c, right - l.px(50), mid, l.px(24), white);
            // Filter: three sliders.
            for (int i = -1; i <= 1; ++i) {
                double y = mid + i * l.px(6);
                textBar(c, right - l.px(20), y - l.px(1), l.px(20), l.px(2), white);
                c.fill(circle(right - l.px(20) + l.px(6 + 4 * i + 4), y, l.px(2.6)), white);
            }
        }
    });
}

FLKFrameLayer FLKMockAppArtwork::drawTabBar(int selected) const {
    const auto& l = layout_;
    return drawFlat(l.width(), l.tabBarHeight(), FLKPaint::hex(0xffffff), [&](FLKCanvas& c) {
        c.fill(roundRect(0, 0, l.width(), std::max(1.0, l.px(0.8)), 0), FLKPaint::hex(0xe4e6f0));
        for (int tab = 0; tab < FLKMockAppLayout::kTabCount; ++tab) {
            FLKRect frame = layout_.tabFrame(tab);
            double cx = frame.midX(), cy = l.px(28);
            bool on = tab == selected;
            FLKPaint background = FLKPaint::hex(0xffffff);
            if (on) {
                background = FLKPaint::hex(kTint);
                c.fill(roundRect(cx - l.px(30), cy - l.px(15), l.px(60), l.px(30), l.px(15)), background);
            }
            drawTabIcon(c, tab, cx, cy, l.px(20), FLKPaint::hex(on ? kPrimary : 0x6b7080), background);
            textBar(c, cx - l.px(15), l.px(52), l.px(30), l.px(5),
                    FLKPaint::hex(on ? kInk : kMutedInk, on ? 0.9f : 0.7f));
        }
    });
}

FLKFrameLayer FLKMockAppArtwork::drawList() const {
    const auto& l = layout_;
    return drawTall(l.width(), l.listHeight(), FLKPaint::hex(kBackground), [&](FLKCanvas& c, double top) {
        FLKPaint ink = FLKPaint::hex(kInk, 0.86f), muted = FLKPaint::hex(kMutedInk, 0.6f);
        for (const FLKMockCard& card : l.cards()) {
            FLKRect f = card.frame.offsetBy(0, -top);
            if (f.maxY() + l.px(12) < 0 || f.origin.y - l.px(12) > c.height()) continue;
            c.fillFeathered(roundRect(f.origin.x, f.origin.y + l.px(2), f.size.width, f.size.height, l.px(14)),
                            FLKPaint::hex(0x1b1f3b, 0.12f), l.px(8));
            FLKRoundedRect shape = roundRect(f.origin.x, f.origin.y, f.size.width, f.size.height, l.px(14));
            c.fill(shape, FLKPaint::hex(0xffffff));
            double rowTop = f.origin.y;
            if (card.hasPhoto) {
                drawPhoto(c, shape, f.origin.y + l.px(150), card.colorIndex);
                rowTop += l.px(150);
            }
            double avatarRadius = l.px(22);
            drawAvatar(c, f.origin.x + l.px(14) + avatarRadius, rowTop + l.px(42), avatarRadius, card.colorIndex);
            double textX = f.origin.x + l.px(14) + 2 * avatarRadius + l.px(12);
            double room = f.maxX() - l.px(56) - textX;
            textBar(c, textX, rowTop + l.px(20), room * card.titleLength, l.px(10), ink);
            textBar(c, textX, rowTop + l.px(40), room * card.firstLine, l.px(7), muted);
            textBar(c, textX, rowTop + l.px(54), room * card.secondLine, l.px(7), muted);
            textBar(c, f.maxX() - l.px(44), rowTop + l.px(21), l.px(30), l.px(6), muted);
            if (card.hasBadge) {
                double bx = f.maxX() - l.px(36), by = rowTop + l.px(44);
                c.fill(roundRect(bx, by, l.px(22), l.px(18), l.px(9)), FLKPaint::hex(kPrimary));
                FLKBarLettering digits(l.px(2));
                digits.draw(c, "3", bx + l.px(11) - digits.widthOf("3") / 2, by + l.px(9) - digits.height() / 2,
                            FLKPaint::hex(0xffffff));
            }
        }
    });
}

FLKFrameLayer FLKMockAppArtwork::drawDetail(const FLKMockCard& card) const {
    const auto& l = layout_;
    return drawTall(l.width(), l.detailHeight(), FLKPaint::hex(0xffffff), [&](FLKCanvas& c, double top) {
        // Short landscape screens get a lower picture, so the text still shows.
        const double heroHeight = std::min(l.px(220), std::max(l.px(120), l.contentHeight() * 0.55));
        const double w = l.width(), margin = l.px(20), hero = heroHeight - top;
        FLKPaint ink = FLKPaint::hex(kInk, 0.86f), muted = FLKPaint::hex(kMutedInk, 0.55f);
        drawPhoto(c, roundRect(0, -top, w, heroHeight, 0), hero, card.colorIndex);
        c.fill(circle(margin + l.px(32), hero, l.px(34)), FLKPaint::hex(0xffffff));
        drawAvatar(c, margin + l.px(32), hero, l.px(30), card.colorIndex);
        double y = hero + l.px(46);
        textBar(c, margin, y, (w - 2 * margin) * 0.62, l.px(16), ink);
        textBar(c, margin, y + l.px(28), (w - 2 * margin) * 0.38, l.px(9), muted);
        y += l.px(60);
        for (int i = 0; i < 3; ++i) {
            double x = margin + i * l.px(92);
            c.fill(roundRect(x, y, l.px(82), l.px(32), l.px(16)), FLKPaint::hex(kTint));
            c.fill(circle(x + l.px(18), y + l.px(16), l.px(7)), accentPair(card.colorIndex + i)[1]);
            textBar(c, x + l.px(32), y + l.px(13), l.px(38), l.px(6), FLKPaint::hex(kPrimaryDark, 0.7f));
        }
        y += l.px(56);
        auto paragraph = [&](int lines, double last) {
            for (int i = 0; i < lines; ++i) {
                double length = i + 1 == lines ? last : 0.9 + 0.1 * ((i * 7 + card.colorIndex) % 3) / 2;
                textBar(c, margin, y, (w - 2 * margin) * length, l.px(8), muted);
                y += l.px(17);
            }
            y += l.px(16);
        };
        paragraph(5, 0.55);
        paragraph(4, 0.7);
        c.fill(roundRect(margin, y, w - 2 * margin, l.px(48), l.px(24)), FLKPaint::hex(kPrimary));
        textBar(c, w / 2 - l.px(40), y + l.px(20), l.px(80), l.px(8), FLKPaint::hex(0xffffff, 0.95f));
        y += l.px(72);
        paragraph(3, 0.4);
        drawPhoto(c, roundRect(margin, y, w - 2 * margin, l.px(160), l.px(14)), y + l.px(160), card.colorIndex + 2);
        y += l.px(180);
        while (y < c.height() + l.px(40)) paragraph(4, 0.6);
    });
}

FLKFrameLayer FLKMockAppArtwork::drawExplore() const {
    const auto& l = layout_;
    return drawTall(l.width(), l.gridHeight(), FLKPaint::hex(kBackground), [&](FLKCanvas& c, double top) {
        for (size_t i = 0; i < l.tiles().size(); ++i) {
            FLKRect f = l.tiles()[i].offsetBy(0, -top);
            if (f.maxY() + l.px(12) < 0 || f.origin.y - l.px(12) > c.height()) continue;
            FLKRoundedRect shape = roundRect(f.origin.x, f.origin.y, f.size.width, f.size.height, l.px(12));
            c.fillFeathered(roundRect(f.origin.x, f.origin.y + l.px(2), f.size.width, f.size.height, l.px(12)),
                            FLKPaint::hex(0x1b1f3b, 0.1f), l.px(6));
            drawPhoto(c, shape, f.maxY(), static_cast<int>(i * 5 + i / 3));
            // A dark scrim under the caption keeps it readable.
            double scrimTop = f.maxY() - l.px(46);
            c.fill(shape, [&](double, double y) {
                return FLKPaint::hex(0x101322,
                                     static_cast<float>(std::clamp((y - scrimTop) / l.px(46), 0.0, 1.0) * 0.45));
            });
            textBar(c, f.origin.x + l.px(10), f.maxY() - l.px(28), f.size.width * (0.5 + 0.1 * (i % 3)), l.px(8),
                    FLKPaint::hex(0xffffff, 0.95f));
            textBar(c, f.origin.x + l.px(10), f.maxY() - l.px(14), f.size.width * 0.35, l.px(6),
                    FLKPaint::hex(0xffffff, 0.7f));
        }
    });
}

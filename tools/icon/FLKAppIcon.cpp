#include "FLKAppIcon.h"

#include <array>
#include <cstdio>

namespace {

struct Box {
    double x, y, width, height, radius;
};

constexpr unsigned kBodyColor = 0x232a36;
// The top and bottom of the screen; the bottom is the canvas overlay's accent.
constexpr unsigned kScreenTop = 0x7cc0ff;
constexpr unsigned kScreenBottom = 0x409cff;
constexpr unsigned kPlayColor = 0xffffff;

constexpr Box kBody{128, 32, 256, 448, 56};
constexpr Box kScreen{146, 50, 220, 412, 40};
// Its centroid is the screen's centre.
constexpr std::array<FLKPoint, 3> kPlay{{{216, 186}, {216, 326}, {336, 256}}};

std::string hex(unsigned rgb) {
    char text[8];
    std::snprintf(text, sizeof text, "#%06x", rgb);
    return text;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string rect(const Box& box, const std::string& fill) {
    return "  <rect x=\"" + number(box.x) + "\" y=\"" + number(box.y) + "\" width=\"" + number(box.width) +
           "\" height=\"" + number(box.height) + "\" rx=\"" + number(box.radius) + "\" fill=\"" + fill + "\"/>\n";
}

FLKRoundedRect scaled(const Box& box, double scale) {
    return {FLKRect(box.x * scale, box.y * scale, box.width * scale, box.height * scale), box.radius * scale};
}

}  // namespace

std::string FLKAppIcon::svg() {
    std::string size = number(kDesignSize);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                       size + "\" height=\"" + size + "\" viewBox=\"0 0 " + size + " " + size + "\">\n";
    text += "  <defs>\n    <linearGradient id=\"screen\" gradientUnits=\"userSpaceOnUse\" x1=\"0\" y1=\"" +
            number(kScreen.y) + "\" x2=\"0\" y2=\"" + number(kScreen.y + kScreen.height) + "\">\n" +
            "      <stop offset=\"0\" stop-color=\"" + hex(kScreenTop) + "\"/>\n" +
            "      <stop offset=\"1\" stop-color=\"" + hex(kScreenBottom) + "\"/>\n    </linearGradient>\n  </defs>\n";
    text += rect(kBody, hex(kBodyColor));
    text += rect(kScreen, "url(#screen)");
    text += "  <polygon points=\"";
    for (size_t i = 0; i < kPlay.size(); ++i)
        text += (i ? " " : "") + number(kPlay[i].x) + "," + number(kPlay[i].y);
    text += "\" fill=\"" + hex(kPlayColor) + "\"/>\n</svg>\n";
    return text;
}

FLKCanvas FLKAppIcon::render(int size) {
    double scale = size / kDesignSize;
    FLKCanvas canvas(size, size);
    canvas.fill(scaled(kBody, scale), FLKPaint::hex(kBodyColor));
    FLKPaint top = FLKPaint::hex(kScreenTop), bottom = FLKPaint::hex(kScreenBottom);
    canvas.fill(scaled(kScreen, scale), [&](double, double y) {
        double t = (y / scale - kScreen.y) / kScreen.height;
        return top.mixed(bottom, static_cast<float>(std::clamp(t, 0.0, 1.0)));
    });
    std::vector<FLKPoint> play;
    for (const FLKPoint& corner : kPlay) play.push_back(corner * scale);
    canvas.fillConvex(play, FLKPaint::hex(kPlayColor));
    return canvas;
}

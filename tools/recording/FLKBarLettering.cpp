#include "FLKBarLettering.h"

#include <cmath>
#include <vector>

namespace {
struct Segment {
    double x0, y0, x1, y1;
};

std::vector<Segment> segmentsOf(char c) {
    switch (c) {
        case '0': return {{0, 0, 2, 0}, {2, 0, 2, 4}, {2, 4, 0, 4}, {0, 4, 0, 0}};
        case '1': return {{1.2, 0, 1.2, 4}, {0.3, 0.8, 1.2, 0}};
        case '2': return {{0, 0, 2, 0}, {2, 0, 2, 2}, {2, 2, 0, 2}, {0, 2, 0, 4}, {0, 4, 2, 4}};
        case '3': return {{0, 0, 2, 0}, {2, 0, 2, 4}, {0.6, 2, 2, 2}, {0, 4, 2, 4}};
        case '4': return {{0, 0, 0, 2}, {0, 2, 2, 2}, {2, 0, 2, 4}};
        case '5': return {{2, 0, 0, 0}, {0, 0, 0, 2}, {0, 2, 2, 2}, {2, 2, 2, 4}, {2, 4, 0, 4}};
        case '6': return {{2, 0, 0, 0}, {0, 0, 0, 4}, {0, 4, 2, 4}, {2, 4, 2, 2}, {2, 2, 0, 2}};
        case '7': return {{0, 0, 2, 0}, {2, 0, 0.8, 4}};
        case '8': return {{0, 0, 2, 0}, {2, 0, 2, 4}, {2, 4, 0, 4}, {0, 4, 0, 0}, {0, 2, 2, 2}};
        case '9': return {{2, 2, 0, 2}, {0, 2, 0, 0}, {0, 0, 2, 0}, {2, 0, 2, 4}, {2, 4, 0, 4}};
        case ':': return {{1, 1.1, 1, 1.1}, {1, 2.9, 1, 2.9}};
        case 'C': return {{2, 0, 0, 0}, {0, 0, 0, 4}, {0, 4, 2, 4}};
        case 'E': return {{2, 0, 0, 0}, {0, 0, 0, 4}, {0, 4, 2, 4}, {0, 2, 1.6, 2}};
        case 'F': return {{2, 0, 0, 0}, {0, 0, 0, 4}, {0, 2, 1.6, 2}};
        case 'G': return {{2, 0, 0, 0}, {0, 0, 0, 4}, {0, 4, 2, 4}, {2, 4, 2, 2}, {2, 2, 1.1, 2}};
        case 'I': return {{1, 0, 1, 4}, {0.2, 0, 1.8, 0}, {0.2, 4, 1.8, 4}};
        case 'M': return {{0, 4, 0, 0}, {0, 0, 1, 2.2}, {1, 2.2, 2, 0}, {2, 0, 2, 4}};
        case 'P': return {{0, 4, 0, 0}, {0, 0, 2, 0}, {2, 0, 2, 2}, {2, 2, 0, 2}};
        case 'R': return {{0, 4, 0, 0}, {0, 0, 2, 0}, {2, 0, 2, 2}, {2, 2, 0, 2}, {0.9, 2, 2, 4}};
        default: return {};
    }
}
}  // namespace

double FLKBarLettering::widthOf(std::string_view text) const {
    if (text.empty()) return 0;
    return advance() * static_cast<double>(text.size() - 1) + 2 * cell_ + thickness();
}

void FLKBarLettering::draw(FLKCanvas& canvas, std::string_view text, double x, double y, const FLKPaint& paint) const {
    const double inset = thickness() / 2;
    for (size_t i = 0; i < text.size(); ++i) {
        double left = x + inset + advance() * static_cast<double>(i), top = y + inset;
        for (const Segment& s : segmentsOf(text[i])) {
            drawStroke(canvas, {left + s.x0 * cell_, top + s.y0 * cell_}, {left + s.x1 * cell_, top + s.y1 * cell_},
                       thickness(), paint);
        }
    }
}

void FLKBarLettering::drawStroke(FLKCanvas& canvas, FLKPoint from, FLKPoint to, double thickness,
                                 const FLKPaint& paint) {
    const double half = thickness / 2;
    auto cap = [&](FLKPoint p) { canvas.fill({FLKRect(p.x - half, p.y - half, 2 * half, 2 * half), half}, paint); };
    if (from.x == to.x || from.y == to.y) {
        // Axis-aligned strokes are capsules: one shape, so no seam at the caps.
        FLKRect box = FLKRect::fromPoints(from, to);
        canvas.fill(
            {FLKRect(box.origin.x - half, box.origin.y - half, box.size.width + 2 * half, box.size.height + 2 * half),
             half},
            paint);
        return;
    }
    double dx = to.x - from.x, dy = to.y - from.y, length = std::hypot(dx, dy);
    double nx = -dy / length * half, ny = dx / length * half;
    canvas.fillConvex(
        {{from.x + nx, from.y + ny}, {to.x + nx, to.y + ny}, {to.x - nx, to.y - ny}, {from.x - nx, from.y - ny}},
        paint);
    cap(from);
    cap(to);
}

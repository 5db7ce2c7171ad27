#include "core/render/FLKProjectiveQuad.h"

#include <cmath>

namespace {
double cross(FLKPoint o, FLKPoint a, FLKPoint b) {
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

bool isStrictlyConvex(const std::array<FLKPoint, 4>& corners) {
    int positive = 0, negative = 0;
    for (size_t i = 0; i < 4; ++i) {
        double turn = cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4]);
        if (turn > 0) ++positive;
        if (turn < 0) ++negative;
    }
    return positive == 4 || negative == 4;
}
}  // namespace

std::optional<std::array<double, 4>> FLKProjectiveQuad::cornerWeights(FLKPoint p0, FLKPoint p1, FLKPoint p2,
                                                                       FLKPoint p3) {
    if (!isStrictlyConvex({p0, p1, p2, p3})) return std::nullopt;
    // Square to quad: (0,0) -> p0, (1,0) -> p1, (1,1) -> p2, (0,1) -> p3.
    double dx1 = p1.x - p2.x, dx2 = p3.x - p2.x, dx3 = p0.x - p1.x + p2.x - p3.x;
    double dy1 = p1.y - p2.y, dy2 = p3.y - p2.y, dy3 = p0.y - p1.y + p2.y - p3.y;
    double g = 0, h = 0;
    if (dx3 != 0 || dy3 != 0) {
        double det = dx1 * dy2 - dx2 * dy1;
        if (det == 0) return std::nullopt;
        g = (dx3 * dy2 - dx2 * dy3) / det;
        h = (dx1 * dy3 - dx3 * dy1) / det;
    }
    std::array<double, 4> weights{1.0, 1.0 + g, 1.0 + g + h, 1.0 + h};
    for (double w : weights) {
        if (!(w > 0) || !std::isfinite(w)) return std::nullopt;
    }
    return weights;
}

std::optional<std::array<FLKVertex, 4>> FLKProjectiveQuad::verticesForPlane(const FLKPlane& plane) {
    auto weights = cornerWeights(plane.topLeft(), plane.topRight(), plane.bottomRight(), plane.bottomLeft());
    if (!weights) return std::nullopt;
    struct Corner {
        FLKPoint point;
        double weight;
        float u, v;
    };
    const Corner corners[4] = {{plane.topLeft(), (*weights)[0], 0, 0},
                               {plane.topRight(), (*weights)[1], 1, 0},
                               {plane.bottomLeft(), (*weights)[3], 0, 1},
                               {plane.bottomRight(), (*weights)[2], 1, 1}};
    std::array<FLKVertex, 4> vertices{};
    for (size_t i = 0; i < 4; ++i) {
        const Corner& c = corners[i];
        vertices[i] = FLKVertex{{static_cast<float>(c.point.x * c.weight), static_cast<float>(c.point.y * c.weight), 0.0f,
                                 static_cast<float>(c.weight)},
                                {c.u, c.v},
                                {0.0f, 0.0f}};
    }
    return vertices;
}

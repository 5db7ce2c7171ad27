#include "core/render/FLKCoverageQuad.h"

#include <algorithm>
#include <cmath>

#include "core/render/FLKProjectiveQuad.h"

namespace {
constexpr double kSubpixels = 256;

// Grid-order record of each corner in turn around the quad: TL, TR, BR, BL.
constexpr std::array<std::uint16_t, 4> kGridIndexOfCorner{0, 1, 3, 2};

std::array<std::uint16_t, 24> makeBandIndices() {
    std::array<std::uint16_t, 24> indices{};
    for (std::uint16_t edge = 0; edge < 4; ++edge) {
        std::uint16_t first = 4 * edge;
        const std::uint16_t triangles[6] = {first, std::uint16_t(first + 1), std::uint16_t(first + 2),
                                            first, std::uint16_t(first + 2), std::uint16_t(first + 3)};
        std::copy(triangles, triangles + 6, indices.begin() + 6 * edge);
    }
    return indices;
}

// Scene to window coordinates (GL's, origin at the first row in memory) for
// an affine camera, and back.
struct WindowMapping {
    double a, b, c, d;  // linear part: wx = a x + b y + tx, wy = c x + d y + ty
    double tx, ty;

    static std::optional<WindowMapping> make(const FLKCoverageQuad::Matrix& m, int width, int height) {
        if (m[3] != 0 || m[7] != 0 || !(m[15] > 0) || width <= 0 || height <= 0) return std::nullopt;
        // Clip y is mirrored in the vertex shaders: scene top lands on the first row.
        double sx = width / 2.0 / m[15], sy = -height / 2.0 / m[15];
        WindowMapping w{m[0] * sx, m[4] * sx, m[1] * sy, m[5] * sy, (m[12] / m[15] + 1) * width / 2.0,
                        (1 - m[13] / m[15]) * height / 2.0};
        if (!std::isfinite(w.a * w.d - w.b * w.c) || w.a * w.d - w.b * w.c == 0) return std::nullopt;
        return w;
    }
    FLKPoint window(FLKPoint p) const { return {a * p.x + b * p.y + tx, c * p.x + d * p.y + ty}; }
    FLKPoint scene(FLKPoint p) const {
        double det = a * d - b * c, x = p.x - tx, y = p.y - ty;
        return {(d * x - b * y) / det, (a * y - c * x) / det};
    }
};

// The point where n0 . q = k0 and n1 . q = k1.
std::optional<FLKPoint> intersect(FLKPoint n0, double k0, FLKPoint n1, double k1) {
    double det = n0.x * n1.y - n0.y * n1.x;
    if (std::abs(det) < 1e-9) return std::nullopt;
    return FLKPoint{(k0 * n1.y - n0.y * k1) / det, (n0.x * k1 - k0 * n1.x) / det};
}

// Solves H (u, v) = s for the square-to-quad homography with corner weights
// `weights` (see FLKProjectiveQuad): the texture coordinates and weight of s.
struct Projective {
    FLKPoint p0;
    double g, h, ax, bx, ay, by;

    Projective(const FLKPlane& plane, const std::array<double, 4>& weights)
        : p0(plane.topLeft()), g(weights[1] - 1), h(weights[3] - 1) {
        FLKPoint p1 = plane.topRight(), p3 = plane.bottomLeft();
        ax = p1.x * (1 + g) - p0.x;
        bx = p3.x * (1 + h) - p0.x;
        ay = p1.y * (1 + g) - p0.y;
        by = p3.y * (1 + h) - p0.y;
    }

    // The quad's point for texture coordinates (u, v) and its record.
    FLKPoint pointFor(double u, double v) const {
        double w = 1 + g * u + h * v;
        return {(ax * u + bx * v + p0.x) / w, (ay * u + by * v + p0.y) / w};
    }
    FLKVertex vertexFor(double u, double v) const {
        double w = 1 + g * u + h * v;
        return FLKVertex{{static_cast<float>(ax * u + bx * v + p0.x), static_cast<float>(ay * u + by * v + p0.y), 0.0f,
                          static_cast<float>(w)},
                         {static_cast<float>(u), static_cast<float>(v)},
                         {0.0f, 0.0f}};
    }

    std::optional<FLKVertex> vertexAt(FLKPoint s) const {
        double a11 = ax - s.x * g, a12 = bx - s.x * h, b1 = s.x - p0.x;
        double a21 = ay - s.y * g, a22 = by - s.y * h, b2 = s.y - p0.y;
        double det = a11 * a22 - a12 * a21;
        if (det == 0) return std::nullopt;
        double u = (b1 * a22 - a12 * b2) / det, v = (a11 * b2 - b1 * a21) / det;
        double w = 1 + g * u + h * v;
        if (!(w > 0) || !std::isfinite(w)) return std::nullopt;
        return FLKVertex{{static_cast<float>(s.x * w), static_cast<float>(s.y * w), 0.0f, static_cast<float>(w)},
                         {static_cast<float>(u), static_cast<float>(v)},
                         {0.0f, 0.0f}};
    }
};

// Every field of the triangle's records extended linearly to s.
FLKColoredVertex extendTriangle(const FLKColoredVertex& p, const FLKColoredVertex& q, const FLKColoredVertex& r,
                                FLKPoint s) {
    double x0 = p.position[0], y0 = p.position[1];
    double e1x = q.position[0] - x0, e1y = q.position[1] - y0;
    double e2x = r.position[0] - x0, e2y = r.position[1] - y0;
    double det = e1x * e2y - e2x * e1y;
    double l1 = ((s.x - x0) * e2y - e2x * (s.y - y0)) / det;
    double l2 = (e1x * (s.y - y0) - (s.x - x0) * e1y) / det;
    double l0 = 1 - l1 - l2;
    auto mix = [&](float a, float b, float c) { return static_cast<float>(l0 * a + l1 * b + l2 * c); };
    FLKColoredVertex out = p;
    out.position[0] = static_cast<float>(s.x);
    out.position[1] = static_cast<float>(s.y);
    for (int i = 0; i < 4; ++i) out.color[i] = mix(p.color[i], q.color[i], r.color[i]);
    for (int i = 0; i < 2; ++i) out.texCoord[i] = mix(p.texCoord[i], q.texCoord[i], r.texCoord[i]);
    return out;
}
}  // namespace

const std::array<std::uint16_t, 24> FLKCoverageQuad::kBandIndices = makeBandIndices();
const std::array<std::uint16_t, 24> FLKCoverageQuad::kHoledInteriorIndices = [] {
    std::array<std::uint16_t, 24> indices{};
    for (std::uint16_t e = 0; e < 4; ++e) {
        std::uint16_t next = (e + 1) % 4;
        const std::uint16_t triangles[6] = {e, next, std::uint16_t(4 + next), e, std::uint16_t(4 + next),
                                            std::uint16_t(4 + e)};
        std::copy(triangles, triangles + 6, indices.begin() + 6 * e);
    }
    return indices;
}();

bool FLKCoverageQuad::isWellInside(FLKPoint scene) const {
    const auto& m = mapping_;
    FLKPoint w{m[0] * scene.x + m[1] * scene.y + m[4], m[2] * scene.x + m[3] * scene.y + m[5]};
    for (size_t e = 0; e < 4; ++e) {
        if (lines_[3 * e] * w.x + lines_[3 * e + 1] * w.y - lines_[3 * e + 2] < kInset + 0.05) return false;
    }
    return true;
}

std::optional<FLKCoverageQuad> FLKCoverageQuad::make(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomRight,
                                                     FLKPoint bottomLeft, const Matrix& matrix, int width,
                                                     int height) {
    auto mapping = WindowMapping::make(matrix, width, height);
    if (!mapping) return std::nullopt;
    const std::array<FLKPoint, 4> scene{topLeft, topRight, bottomRight, bottomLeft};
    // Rasterisers snap vertices to 1/256 of a pixel; edges through the snapped
    // corners decide the same samples as the multisampled draw.
    std::array<FLKPoint, 4> corners{};
    for (size_t i = 0; i < 4; ++i) {
        FLKPoint w = mapping->window(scene[i]);
        corners[i] = {std::round(w.x * kSubpixels) / kSubpixels, std::round(w.y * kSubpixels) / kSubpixels};
    }
    int positive = 0, negative = 0;
    for (size_t i = 0; i < 4; ++i) {
        FLKPoint o = corners[i], a = corners[(i + 1) % 4], b = corners[(i + 2) % 4];
        double turn = (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
        if (turn > 0) ++positive;
        if (turn < 0) ++negative;
    }
    if (positive != 4 && negative != 4) return std::nullopt;

    FLKCoverageQuad quad;
    quad.mapping_ = {mapping->a, mapping->b, mapping->c, mapping->d, mapping->tx, mapping->ty};
    std::array<FLKPoint, 4> normals{};  // inward, unit length
    std::array<double, 4> offsets{};    // n . p >= offset inside
    for (size_t e = 0; e < 4; ++e) {
        FLKPoint start = corners[e], end = corners[(e + 1) % 4];
        double dx = end.x - start.x, dy = end.y - start.y, length = std::hypot(dx, dy);
        FLKPoint n = positive == 4 ? FLKPoint{-dy / length, dx / length} : FLKPoint{dy / length, -dx / length};
        normals[e] = n;
        offsets[e] = n.x * start.x + n.y * start.y;
        quad.lines_[3 * e] = n.x;
        quad.lines_[3 * e + 1] = n.y;
        quad.lines_[3 * e + 2] = offsets[e];
        quad.edges_[4 * e] = static_cast<float>(n.x);
        quad.edges_[4 * e + 1] = static_cast<float>(n.y);
        quad.edges_[4 * e + 2] = static_cast<float>(-offsets[e]);
        quad.edges_[4 * e + 3] = 0.0f;
    }
    // Corner c lies between edge c - 1 and edge c.
    auto shifted = [&](size_t c, double by) {
        size_t before = (c + 3) % 4;
        return intersect(normals[before], offsets[before] + by, normals[c], offsets[c] + by);
    };
    std::array<FLKPoint, 4> inner{};
    quad.hasInterior_ = true;
    for (size_t c = 0; c < 4; ++c) {
        auto outer = shifted(c, -kOutset);
        auto in = shifted(c, kInset);
        if (!outer) return std::nullopt;
        quad.outer_[c] = mapping->scene(*outer);
        if (!in) {
            quad.hasInterior_ = false;
            continue;
        }
        inner[c] = *in;
        // A quad thinner than twice the inset has no interior: its moved-in
        // corners fall outside some other edge.
        for (size_t e = 0; e < 4; ++e) {
            if (normals[e].x * in->x + normals[e].y * in->y - offsets[e] < kInset - 1e-6) quad.hasInterior_ = false;
        }
    }
    for (size_t c = 0; c < 4; ++c) quad.inner_[c] = quad.hasInterior_ ? mapping->scene(inner[c]) : scene[c];
    return quad;
}

std::optional<FLKCoverageQuad::Geometry<FLKVertex>> FLKCoverageQuad::texturedGeometry(const FLKPlane& plane,
                                                                                     const Matrix& matrix, int width,
                                                                                     int height,
                                                                                     std::optional<std::array<double, 4>> hole) {
    auto exact = FLKProjectiveQuad::verticesForPlane(plane);
    auto weights = FLKProjectiveQuad::cornerWeights(plane.topLeft(), plane.topRight(), plane.bottomRight(),
                                                    plane.bottomLeft());
    auto quad = make(plane.topLeft(), plane.topRight(), plane.bottomRight(), plane.bottomLeft(), matrix, width,
                     height);
    if (!exact || !weights || !quad) return std::nullopt;
    const Projective projective(plane, *weights);
    Geometry<FLKVertex> geometry;
    geometry.edges = quad->edges();
    geometry.interiorNeedsCoverage = !quad->hasInterior();
    std::array<FLKVertex, 4> inner{};  // corners in turn
    geometry.interior.resize(4);
    for (size_t c = 0; c < 4; ++c) {
        auto vertex = quad->hasInterior() ? projective.vertexAt(quad->inner_[c])
                                          : std::optional<FLKVertex>((*exact)[kGridIndexOfCorner[c]]);
        if (!vertex) return std::nullopt;
        inner[c] = *vertex;
        geometry.interior[kGridIndexOfCorner[c]] = *vertex;
    }
    if (hole && quad->hasInterior()) {
        auto [u0, v0, u1, v1] = *hole;
        const std::array<std::array<double, 2>, 4> uv{{{u0, v0}, {u1, v0}, {u1, v1}, {u0, v1}}};
        std::array<FLKVertex, 4> holeCorners{};
        bool fits = u0 < u1 && v0 < v1;
        for (size_t c = 0; c < 4 && fits; ++c) {
            holeCorners[c] = projective.vertexFor(uv[c][0], uv[c][1]);
            fits = quad->isWellInside(projective.pointFor(uv[c][0], uv[c][1]));
        }
        // Each piece between the inner corners and the hole must be convex to be two triangles.
        auto window = [&](const FLKVertex& v) {
            double x = v.position[0] / v.position[3], y = v.position[1] / v.position[3];
            const auto& m = quad->mapping_;
            return FLKPoint{m[0] * x + m[1] * y + m[4], m[2] * x + m[3] * y + m[5]};
        };
        for (size_t e = 0; e < 4 && fits; ++e) {
            size_t next = (e + 1) % 4;
            const std::array<FLKPoint, 4> piece{window(inner[e]), window(inner[next]), window(holeCorners[next]),
                                                window(holeCorners[e])};
            int positive = 0, negative = 0;
            for (size_t i = 0; i < 4; ++i) {
                FLKPoint o = piece[i], a = piece[(i + 1) % 4], b = piece[(i + 2) % 4];
                double turn = (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
                positive += turn > 0;
                negative += turn < 0;
            }
            fits = positive == 4 || negative == 4;
        }
        if (fits) {
            geometry.interior.assign(inner.begin(), inner.end());
            geometry.interior.insert(geometry.interior.end(), holeCorners.begin(), holeCorners.end());
            geometry.interiorHasHole = true;
        }
    }
    for (size_t e = 0; e < 4; ++e) {
        size_t start = e, end = (e + 1) % 4;
        auto outerEnd = projective.vertexAt(quad->outer_[end]);
        auto outerStart = projective.vertexAt(quad->outer_[start]);
        if (!outerEnd || !outerStart) return std::nullopt;
        geometry.band[4 * e] = inner[start];
        geometry.band[4 * e + 1] = inner[end];
        geometry.band[4 * e + 2] = *outerEnd;
        geometry.band[4 * e + 3] = *outerStart;
    }
    return geometry;
}

std::optional<FLKCoverageQuad::Geometry<FLKColoredVertex>> FLKCoverageQuad::coloredGeometry(
    const std::array<FLKColoredVertex, 4>& corners, const Matrix& matrix, int width, int height) {
    for (const auto& corner : corners) {
        if (corner.position[3] != 1.0f) return std::nullopt;  // only affine records extend linearly
    }
    auto at = [&](size_t gridIndex) { return FLKPoint{corners[gridIndex].position[0], corners[gridIndex].position[1]}; };
    auto quad = make(at(0), at(1), at(3), at(2), matrix, width, height);
    if (!quad) return std::nullopt;
    // The triangles (0, 1, 2) and (1, 3, 2).
    auto first = [&](FLKPoint s) { return extendTriangle(corners[0], corners[1], corners[2], s); };
    auto second = [&](FLKPoint s) { return extendTriangle(corners[1], corners[3], corners[2], s); };
    auto inFirst = [&](FLKPoint s) {
        // The diagonal from record 1 to record 2 separates them; record 0 is on the first's side.
        auto side = [&](FLKPoint p) {
            return (at(2).x - at(1).x) * (p.y - at(1).y) - (at(2).y - at(1).y) * (p.x - at(1).x);
        };
        return side(s) * side(at(0)) >= 0;
    };
    Geometry<FLKColoredVertex> geometry;
    geometry.edges = quad->edges();
    geometry.interiorNeedsCoverage = !quad->hasInterior();
    geometry.interior.resize(4);
    for (size_t c = 0; c < 4; ++c) {
        FLKPoint s = quad->innerCorners()[c];
        size_t grid = kGridIndexOfCorner[c];
        geometry.interior[grid] = !quad->hasInterior() ? corners[grid] : inFirst(s) ? first(s) : second(s);
    }
    for (size_t e = 0; e < 4; ++e) {
        // Top and left edges belong to the first triangle, right and bottom to the second.
        bool ownedByFirst = e == 0 || e == 3;
        auto extend = [&](FLKPoint s) { return ownedByFirst ? first(s) : second(s); };
        size_t start = e, end = (e + 1) % 4;
        auto inner = [&](size_t c) {
            return quad->hasInterior() ? extend(quad->innerCorners()[c]) : corners[kGridIndexOfCorner[c]];
        };
        geometry.band[4 * e] = inner(start);
        geometry.band[4 * e + 1] = inner(end);
        geometry.band[4 * e + 2] = extend(quad->outerCorners()[end]);
        geometry.band[4 * e + 3] = extend(quad->outerCorners()[start]);
    }
    return geometry;
}

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "core/scene/FLKLine.h"
#include "core/scene/FLKProjectiveVertexGridSolver.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKVertexGridSolver.h"

namespace {

// The projective map of the unit square onto a quad: (0,0) -> top left,
// (1,0) -> top right, (1,1) -> bottom right, (0,1) -> bottom left.
class Homography {
public:
    Homography(FLKPoint topLeft, FLKPoint topRight, FLKPoint bottomRight, FLKPoint bottomLeft) {
        const std::array<std::pair<FLKPoint, FLKPoint>, 4> pairs = {
            {{{0, 0}, topLeft}, {{1, 0}, topRight}, {{1, 1}, bottomRight}, {{0, 1}, bottomLeft}}};
        // Unknowns h0..h7 of x = (h0 u + h1 v + h2) / (h6 u + h7 v + 1), y likewise with h3..h5.
        double m[8][9] = {};
        for (int i = 0; i < 4; ++i) {
            const auto [uv, xy] = pairs[i];
            double* rx = m[2 * i];
            double* ry = m[2 * i + 1];
            rx[0] = uv.x, rx[1] = uv.y, rx[2] = 1, rx[6] = -uv.x * xy.x, rx[7] = -uv.y * xy.x, rx[8] = xy.x;
            ry[3] = uv.x, ry[4] = uv.y, ry[5] = 1, ry[6] = -uv.x * xy.y, ry[7] = -uv.y * xy.y, ry[8] = xy.y;
        }
        solve(m);
    }

    FLKPoint map(double u, double v) const {
        const double w = h[6] * u + h[7] * v + 1;
        return {(h[0] * u + h[1] * v + h[2]) / w, (h[3] * u + h[4] * v + h[5]) / w};
    }

private:
    void solve(double m[8][9]) {
        for (int col = 0; col < 8; ++col) {
            int pivot = col;
            for (int row = col + 1; row < 8; ++row) {
                if (std::fabs(m[row][col]) > std::fabs(m[pivot][col])) pivot = row;
            }
            std::swap(m[col], m[pivot]);
            for (int row = 0; row < 8; ++row) {
                if (row == col) continue;
                const double f = m[row][col] / m[col][col];
                for (int k = col; k < 9; ++k) m[row][k] -= f * m[col][k];
            }
        }
        for (int i = 0; i < 8; ++i) h[i] = m[i][8] / m[i][i];
    }

    double h[8] = {};
};

struct Quad {
    FLKPoint topLeft, topRight, bottomRight, bottomLeft;
};

double cross(FLKPoint o, FLKPoint a, FLKPoint b) { return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x); }

bool strictlyConvex(const Quad& q) {
    const FLKPoint p[4] = {q.topLeft, q.topRight, q.bottomRight, q.bottomLeft};
    for (int i = 0; i < 4; ++i) {
        if (!(cross(p[i], p[(i + 1) % 4], p[(i + 2) % 4]) > 0)) return false;
    }
    return true;
}

// Worst distance between each grid vertex and the homography image of its
// grid position, relative to the quad's diagonal.
double worstRelativeError(const FLKPlane& plane, const Quad& q) {
    const Homography h(q.topLeft, q.topRight, q.bottomRight, q.bottomLeft);
    const unsigned g = plane.gridSize();
    const double scale = std::max(q.topLeft.distanceTo(q.bottomRight), q.topRight.distanceTo(q.bottomLeft));
    double worst = 0;
    for (unsigned r = 0; r <= g; ++r) {
        for (unsigned k = 0; k <= g; ++k) {
            const FLKVertex& vertex = plane.vertices()[r * (g + 1) + k];
            const FLKPoint expected = h.map(double(k) / g, double(r) / g);
            const FLKPoint actual{vertex.position[0], vertex.position[1]};
            worst = std::max(worst, actual.distanceTo(expected) / scale);
        }
    }
    return worst;
}

void expectRecordLayout(const FLKPlane& plane) {
    const unsigned g = plane.gridSize();
    for (unsigned r = 0; r <= g; ++r) {
        for (unsigned k = 0; k <= g; ++k) {
            const FLKVertex& vertex = plane.vertices()[r * (g + 1) + k];
            ASSERT_EQ(vertex.texCoord[0], float(k) / float(g));
            ASSERT_EQ(vertex.texCoord[1], float(r) / float(g));
            ASSERT_EQ(vertex.position[2], 0.0f);
            ASSERT_EQ(vertex.position[3], 1.0f);
            ASSERT_EQ(vertex.reserved[0], 0.0f);
            ASSERT_EQ(vertex.reserved[1], 0.0f);
        }
    }
}

bool usesPerspective(const FLKPlane& plane) {
    return dynamic_cast<const FLKPerspectiveVertexGridSolver*>(&plane.vertexGridSolver()) != nullptr;
}

}  // namespace

TEST(FLKPerspectiveGrid, MatchesTheHomographyOfRandomConvexQuads) {
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> jitter(-180, 180);
    std::uniform_real_distribution<double> origin(-2000, 2000);
    int checked = 0;
    while (checked < 40) {
        const FLKPoint o{origin(random), origin(random)};
        const Quad q{o + FLKPoint{jitter(random), jitter(random)},
                     o + FLKPoint{500 + jitter(random), jitter(random)},
                     o + FLKPoint{500 + jitter(random), 400 + jitter(random)},
                     o + FLKPoint{jitter(random), 400 + jitter(random)}};
        if (!strictlyConvex(q)) continue;
        const unsigned gridSize = checked % 4 == 0 ? 16 : 128;
        const FLKPlane plane(q.topLeft, q.topRight, q.bottomLeft, q.bottomRight, gridSize);
        ASSERT_TRUE(usesPerspective(plane));
        EXPECT_LT(worstRelativeError(plane, q), 1e-6) << plane.description();
        ++checked;
    }
}

TEST(FLKPerspectiveGrid, TrapezoidWithExactlyParallelEdgesStaysExact) {
    // Top and bottom are parallel, so one vanishing point comes from the zero-determinant guard.
    const Quad q{{0, 0}, {400, 0}, {450, 300}, {-50, 300}};
    const FLKPlane plane(q.topLeft, q.topRight, q.bottomLeft, q.bottomRight);
    ASSERT_TRUE(usesPerspective(plane));
    EXPECT_LT(worstRelativeError(plane, q), 1e-6);
    expectRecordLayout(plane);
}

TEST(FLKBilinearGrid, MatchesTheAffineImageOfParallelograms) {
    // Whole-number corners keep opposite slopes exactly equal, so the bilinear grid is chosen.
    std::mt19937 random(7);
    std::uniform_int_distribution<int> coordinate(-1500, 1500);
    for (int i = 0; i < 20; ++i) {
        const FLKPoint topLeft{double(coordinate(random)), double(coordinate(random))};
        const FLKPoint across{double(coordinate(random)), double(coordinate(random))};
        const FLKPoint down{double(coordinate(random)), double(coordinate(random))};
        const Quad q{topLeft, topLeft + across, topLeft + across + down, topLeft + down};
        const FLKPlane plane(q.topLeft, q.topRight, q.bottomLeft, q.bottomRight, i % 2 ? 128 : 32);
        ASSERT_FALSE(usesPerspective(plane)) << plane.description();
        EXPECT_LT(worstRelativeError(plane, q), 1e-6) << plane.description();
    }
    const FLKPlane sheared({10, 10}, {110, 30}, {-20, 90}, {80, 110});
    ASSERT_FALSE(usesPerspective(sheared));
    EXPECT_LT(worstRelativeError(sheared, {{10, 10}, {110, 30}, {80, 110}, {-20, 90}}), 1e-6);
    expectRecordLayout(sheared);
}

TEST(FLKPerspectiveGrid, OffsetForOriginFollowsTheHalvingPath) {
    using Solver = FLKPerspectiveVertexGridSolver;
    EXPECT_EQ(Solver::offsetForOrigin({1, 0, 1}, 8), 5u);
    EXPECT_EQ(Solver::offsetForOrigin({1, 1, 1, 1}, 8), 7u);
    EXPECT_EQ(Solver::offsetForOrigin({}, 8), 0u);
    EXPECT_EQ(Solver::offsetForOrigin({1}, 128), 64u);
    EXPECT_EQ(Solver::offsetForOrigin({0, 1}, 128), 32u);
}

TEST(FLKPerspectiveGrid, SolverFillsEveryInteriorLineOnce) {
    // A grid that missed a line would leave a degenerate record, whose
    // intersections collapse far from the homography image.
    const Quad q{{0, 0}, {300, 40}, {260, 260}, {20, 200}};
    for (unsigned gridSize : {1u, 2u, 4u, 8u, 64u}) {
        const FLKPlane plane(q.topLeft, q.topRight, q.bottomLeft, q.bottomRight, gridSize);
        EXPECT_LT(worstRelativeError(plane, q), 1e-6) << "grid " << gridSize;
    }
}

TEST(FLKLine, CoefficientsAndDegenerateMarker) {
    const FLKLine line = FLKLine::through({1, 2}, {4, 8});
    EXPECT_EQ(line.a, -6);
    EXPECT_EQ(line.b, 3);
    EXPECT_EQ(line.c, 1 * 8 - 2 * 4);
    EXPECT_EQ(line.slope, 2);

    const FLKLine degenerate = FLKLine::through({3, 3}, {3, 3});
    for (double field : {degenerate.a, degenerate.b, degenerate.c, degenerate.slope}) {
        EXPECT_EQ(field, -3.4028234663852886e38);
    }

    // Parallel lines meet far away in their own direction instead of dividing by zero.
    const FLKPoint far = FLKLine::through({0, 0}, {1, 0}).intersection(FLKLine::through({0, 5}, {1, 5}));
    EXPECT_TRUE(std::isfinite(far.x));
    EXPECT_GT(std::fabs(far.x), 1e6);
    EXPECT_EQ(far.y, 0);
}

TEST(FLKPerspectiveGrid, CoincidentCornersStillGiveAFiniteGrid) {
    const FLKPlane plane({0, 0}, {0, 0}, {-10, 80}, {120, 90}, 16);
    ASSERT_TRUE(usesPerspective(plane));
    for (std::size_t i = 0; i < plane.vertexCount(); ++i) {
        ASSERT_TRUE(std::isfinite(plane.vertices()[i].position[0]));
        ASSERT_TRUE(std::isfinite(plane.vertices()[i].position[1]));
    }
}

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

#include "core/platform/FLKSerializable.h"
#include "core/scene/FLKProjectiveVertexGridSolver.h"
#include "core/scene/FLKPlane.h"
#include "core/scene/FLKQuad.h"

namespace {

bool usesPerspective(const FLKPlane& plane) {
    return dynamic_cast<const FLKPerspectiveVertexGridSolver*>(&plane.vertexGridSolver()) != nullptr;
}

void expectCorners(const FLKPlane& plane, FLKPoint tl, FLKPoint tr, FLKPoint br, FLKPoint bl) {
    EXPECT_EQ(plane.topLeft(), tl);
    EXPECT_EQ(plane.topRight(), tr);
    EXPECT_EQ(plane.bottomRight(), br);
    EXPECT_EQ(plane.bottomLeft(), bl);
}

void expectVertex(const FLKVertex& v, float x, float y, float u, float t) {
    EXPECT_EQ(v.position[0], x);
    EXPECT_EQ(v.position[1], y);
    EXPECT_EQ(v.texCoord[0], u);
    EXPECT_EQ(v.texCoord[1], t);
}

}  // namespace

TEST(FLKPlane, FrameGivesTheDefaultBilinearGrid) {
    const auto plane = FLKPlane::planeWithFrame({0, 0, 100, 50});
    expectCorners(*plane, {0, 0}, {100, 0}, {100, 50}, {0, 50});
    EXPECT_EQ(plane->gridSize(), 128u);
    EXPECT_EQ(plane->bounds(), FLKRect(0, 0, 100, 50));
    EXPECT_EQ(plane->vertexCount(), 16641u);
    EXPECT_EQ(plane->verticesLength(), 532512u);
    EXPECT_EQ(plane->indicesLength(), 196608u);
    EXPECT_FALSE(usesPerspective(*plane));

    expectVertex(plane->vertices()[0], 0, 0, 0, 0);
    expectVertex(plane->vertices()[128], 100, 0, 1, 0);
    expectVertex(plane->vertices()[16640], 100, 50, 1, 1);
    expectVertex(plane->vertices()[129 * 64 + 32], 25, 25, 0.25f, 0.5f);
}

TEST(FLKPlane, SolverFollowsTheShape) {
    auto plane = FLKPlane::planeWithFrame({10, 20, 300, 200});
    EXPECT_TRUE(usesPerspective(*plane->shapeBySettingPoint({10.001, 20}, 0)));
    EXPECT_TRUE(usesPerspective(*plane->shapeBySettingPoint({400, 250}, 2)));
    EXPECT_FALSE(usesPerspective(*plane->shapeMovedBy({-7.5, 13})));
    EXPECT_FALSE(usesPerspective(*plane->shapeScaledBy(2.5)));

    plane->setBottomLeft({0, 230});
    EXPECT_TRUE(usesPerspective(*plane));
    EXPECT_EQ(plane->bounds(), FLKRect(0, 20, 310, 210));

    // Both pairs of edges collapsed: equal degenerate slopes, and two vertical sides.
    const FLKPlane line({0, 0}, {0, 0}, {0, 10}, {0, 10});
    EXPECT_FALSE(usesPerspective(line));
    // A slope that is not a number picks the perspective grid.
    const FLKPlane broken({NAN, 0}, {10, 0}, {0, 10}, {10, 10});
    EXPECT_TRUE(usesPerspective(broken));
}

TEST(FLKPlane, IndicesFormTwoTrianglesPerCell) {
    const FLKPlane plane({0, 0}, {4, 0}, {0, 4}, {4, 4}, 4);
    ASSERT_EQ(plane.indexCount(), 96u);
    const std::uint16_t cell0[6] = {0, 1, 5, 1, 6, 5};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(plane.indices()[i], cell0[i]);
    // The last cell ends at the last vertex.
    const std::uint16_t last[6] = {18, 19, 23, 19, 24, 23};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(plane.indices()[90 + i], last[i]);

    const FLKPlane largest({0, 0}, {1, 0}, {0, 1}, {1, 1}, 1000);
    EXPECT_EQ(largest.gridSize(), 255u);
    EXPECT_EQ(largest.indices()[largest.indexCount() - 2], 65535);
}

TEST(FLKPlane, OrientationPermutesCorners) {
    const FLKPlane plane({1, 2}, {30, 4}, {5, 60}, {70, 80}, 16);
    const auto turned = plane.planeWithOrientation(2);
    expectCorners(*turned, {30, 4}, {70, 80}, {5, 60}, {1, 2});
    EXPECT_EQ(turned->gridSize(), 128u);
    EXPECT_EQ(*turned->planeWithOrientation(4), FLKPlane({1, 2}, {30, 4}, {5, 60}, {70, 80}));
    EXPECT_EQ(*plane.planeWithOrientation(3)->planeWithOrientation(3), FLKPlane({1, 2}, {30, 4}, {5, 60}, {70, 80}));
    expectCorners(*plane.planeWithOrientation(4), {5, 60}, {1, 2}, {30, 4}, {70, 80});
    expectCorners(*plane.planeWithOrientation(9), {1, 2}, {30, 4}, {70, 80}, {5, 60});
    EXPECT_EQ(*plane.planeWithOrientation(1), plane);
}

TEST(FLKPlane, TransformsAnswerNewPlanes) {
    const FLKPlane plane({4, 6}, {20, 6}, {4, 30}, {24, 36}, 32);
    const auto moved = plane.shapeMovedTo({10, 10});
    expectCorners(*moved, {10, 10}, {26, 10}, {30, 40}, {10, 34});
    EXPECT_EQ(moved->gridSize(), 32u);
    expectCorners(plane, {4, 6}, {20, 6}, {24, 36}, {4, 30});

    const auto scaled = plane.shapeScaledBy(2, {4, 6});
    expectCorners(*scaled, {4, 6}, {36, 6}, {44, 66}, {4, 54});
    const auto aboutCenter = FLKPlane::planeWithFrame({0, 0, 10, 20})->shapeScaledBy(0.5);
    EXPECT_EQ(aboutCenter->bounds(), FLKRect(2.5, 5, 5, 10));

    const auto edited = plane.shapeBySettingPoint({50, 50}, 2);
    expectCorners(*edited, {4, 6}, {20, 6}, {50, 50}, {4, 30});
    EXPECT_EQ(plane.createPoints(), (std::vector<FLKPoint>{{4, 6}, {20, 6}, {24, 36}, {4, 30}}));

    const auto quadMoved = FLKQuad::quadWithFrame({0, 0, 1, 1})->shapeMovedBy({1, 1});
    EXPECT_EQ(quadMoved->className(), "FLKQuad");
}

TEST(FLKPlane, SetBoundsMapsCornersIntoTheNewRectangle) {
    auto plane = FLKPlane::planeWithFrame({0, 0, 100, 50});
    plane->setBounds({10, 20, 200, 100});
    expectCorners(*plane, {10, 20}, {210, 20}, {210, 120}, {10, 120});

    FLKPlane skewed({0, 0}, {100, 10}, {10, 100}, {80, 80});
    skewed.setBounds({0, 0, 50, 50});
    expectCorners(skewed, {0, 0}, {50, 5}, {40, 40}, {5, 50});
    EXPECT_EQ(skewed.bounds(), FLKRect(0, 0, 50, 50));

    FLKPlane flat({0, 5}, {10, 5}, {0, 5}, {10, 5});
    flat.setBounds({0, 0, 20, 20});
    EXPECT_EQ(flat.bounds(), FLKRect(0, 10, 20, 0));
}

TEST(FLKPlane, CopiesAreIndependentValues) {
    const auto original = FLKQuad::quadWithFrame({0, 0, 10, 10});
    const auto copy = original->copy();
    EXPECT_EQ(copy->className(), "FLKQuad");
    EXPECT_EQ(*copy, *original);
    copy->setTopLeft({-5, -5});
    EXPECT_EQ(original->topLeft(), FLKPoint(0, 0));
    EXPECT_EQ(original->vertices()[0].position[0], 0.0f);
    EXPECT_EQ(copy->vertices()[0].position[0], -5.0f);
    EXPECT_NE(*copy, *original);
}

TEST(FLKPlane, EqualityAndHash) {
    const FLKPlane a({0, 0}, {10, 0}, {0, 10}, {12, 11});
    const FLKQuad sameCorners({0, 0}, {10, 0}, {0, 10}, {12, 11});
    EXPECT_TRUE(a.isEqual(sameCorners));
    EXPECT_EQ(a.hash(), sameCorners.hash());
    EXPECT_FALSE(a.isEqual(FLKPlane({0, 0}, {10, 0}, {0, 10}, {12, 11}, 64)));
    EXPECT_FALSE(a.isEqual(FLKPlane({0, 0}, {10, 0}, {12, 11}, {0, 10})));
    EXPECT_NE(a.hash(), FLKPlane({0, 0}, {10, 0}, {12, 11}, {0, 10}).hash());
}

TEST(FLKPlane, SerialisesCornersClockwiseAndLoadsTheNamedClass) {
    const FLKQuad quad({1, 2}, {30, 4}, {5, 60}, {70.25, 80}, 16);
    const FLKJSON json = quad.serialized();
    EXPECT_EQ(json["className"], "FLKQuad");
    ASSERT_EQ(json["points"].size(), 4u);
    EXPECT_EQ(json["points"][2], (FLKJSON{{"X", 70.25}, {"Y", 80}}));
    EXPECT_EQ(json["points"][3], (FLKJSON{{"X", 5}, {"Y", 60}}));

    const auto loaded = FLKPlane::newWithDictionary(FLKJSON::parse(json.dump()));
    ASSERT_NE(loaded, nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<FLKQuad>(loaded), nullptr);
    expectCorners(*loaded, {1, 2}, {30, 4}, {70.25, 80}, {5, 60});
    EXPECT_EQ(loaded->gridSize(), 128u);

    const auto viaRegistry = flk::objectWithDictionary<FLKShape>(FLKPlane({0, 0}, {1, 0}, {0, 1}, {1, 1}).serialized());
    ASSERT_NE(viaRegistry, nullptr);
    EXPECT_EQ(viaRegistry->className(), "FLKPlane");
}

TEST(FLKPlane, MalformedDictionariesLoadNothing) {
    EXPECT_EQ(FLKPlane::newWithDictionary(FLKJSON{{"className", "FLKPlane"}}), nullptr);
    EXPECT_EQ(FLKPlane::newWithDictionary(FLKJSON{{"className", "FLKPlane"}, {"points", {1, 2, 3, 4}}}), nullptr);
    EXPECT_EQ(FLKPlane::newWithDictionary(FLKJSON{{"className", "NoSuchClass"}}), nullptr);
    EXPECT_EQ(FLKPlane::newWithDictionary(FLKJSON::array()), nullptr);
}

TEST(FLKPlane, ContainsPointByEvenOddCrossing) {
    const FLKPlane plane({0, 0}, {100, 20}, {10, 80}, {90, 100});
    EXPECT_TRUE(plane.containsPoint({50, 50}));
    EXPECT_TRUE(plane.containsPoint({95, 25}));
    EXPECT_FALSE(plane.containsPoint({95, 10}));
    EXPECT_FALSE(plane.containsPoint({-1, 40}));
    EXPECT_FALSE(plane.containsPoint({50, 101}));

    // A bow tie: the crossing test counts the two lobes as inside, not the gaps.
    const FLKPlane bowTie({0, 0}, {100, 0}, {100, 100}, {0, 100});
    EXPECT_TRUE(bowTie.containsPoint({50, 20}));
    EXPECT_FALSE(bowTie.containsPoint({10, 50}));
}

TEST(FLKPlane, ConvexityKeepsTheZeroTurnRule) {
    EXPECT_TRUE(FLKPlane::planeWithFrame({0, 0, 10, 10})->isConvex());
    EXPECT_TRUE(FLKPlane({0, 0}, {0, 10}, {10, 0}, {10, 10}).isConvex());  // wound the other way
    EXPECT_FALSE(FLKPlane({0, 0}, {10, 0}, {0, 10}, {3, 3}).isConvex());   // dart
    EXPECT_FALSE(FLKPlane({0, 0}, {10, 0}, {10, 10}, {0, 10}).isConvex()); // bow tie
    // Some turns zero: a corner on an edge, or two equal corners.
    EXPECT_FALSE(FLKPlane({0, 0}, {10, 0}, {0, 10}, {20, 0}).isConvex());
    EXPECT_FALSE(FLKPlane({0, 0}, {0, 0}, {0, 10}, {10, 10}).isConvex());
    // Every turn zero: all corners on one line.
    EXPECT_TRUE(FLKPlane({0, 0}, {10, 10}, {30, 30}, {20, 20}).isConvex());
    EXPECT_TRUE(FLKPlane().isConvex());
}

TEST(FLKPlane, PlanesBuiltOnSeveralThreadsShareCorrectIndices) {
    // Index arrays are shared between planes of one grid size across threads.
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &wrong] {
            for (int i = 0; i < 20; ++i) {
                const unsigned gridSize = (i + t) % 2 ? 128 : 8;
                const FLKPlane plane({0, 0}, {10, 1}, {0, 10}, {12, 12}, gridSize);
                const std::uint16_t* last = plane.indices() + plane.indexCount() - 6;
                if (last[4] != (gridSize + 1) * (gridSize + 1) - 1) ++wrong;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

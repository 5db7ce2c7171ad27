#include <gtest/gtest.h>

#include "core/scene/FLKCamera.h"
#include "core/scene/FLKPlane.h"

namespace {
void expectPoint(FLKPoint actual, FLKPoint expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-9);
    EXPECT_NEAR(actual.y, expected.y, 1e-9);
}

void expectRect(const FLKRect& actual, const FLKRect& expected) {
    expectPoint(actual.origin, expected.origin);
    EXPECT_NEAR(actual.size.width, expected.size.width, 1e-9);
    EXPECT_NEAR(actual.size.height, expected.size.height, 1e-9);
}
}  // namespace

TEST(FLKCamera, ScaleIsClampedAndScaleByAdds) {
    FLKCamera camera;
    camera.setScale(100);
    EXPECT_EQ(camera.scale(), 16.0);
    camera.setScale(0.1);
    EXPECT_EQ(camera.scale(), 0.25);
    camera.setScale(1.0);
    camera.scaleBy(-0.5);
    EXPECT_EQ(camera.scale(), 0.5);
    camera.scaleBy(-1.0);
    EXPECT_EQ(camera.scale(), 0.25);
}

TEST(FLKCamera, FrameGivesCenterAndYDownProjection) {
    auto camera = FLKCamera::cameraWithFrame({10, 20, 200, 100});
    expectPoint(camera->center(), {110, 70});
    auto m = camera->uniforms();
    EXPECT_FLOAT_EQ(m[0], 2.0f / 200);
    EXPECT_FLOAT_EQ(m[5], -2.0f / 100);
    EXPECT_FLOAT_EQ(m[10], 1.0f);
    EXPECT_FLOAT_EQ(m[12], -1.1f);
    EXPECT_FLOAT_EQ(m[13], 1.4f);
    EXPECT_FLOAT_EQ(m[14], 0.0f);
    EXPECT_FLOAT_EQ(m[15], 1.0f);
    for (int i : {1, 2, 3, 4, 6, 7, 8, 9, 11}) EXPECT_EQ(m[i], 0.0f) << i;

    // The frame's corners land on clip space: top left (-1, 1), bottom right (1, -1).
    auto clip = [&](double x, double y) {
        return FLKPoint{m[0] * x + m[12], m[5] * y + m[13]};
    };
    EXPECT_NEAR(clip(10, 20).x, -1, 1e-6);
    EXPECT_NEAR(clip(10, 20).y, 1, 1e-6);
    EXPECT_NEAR(clip(210, 120).x, 1, 1e-6);
    EXPECT_NEAR(clip(210, 120).y, -1, 1e-6);
}

TEST(FLKCamera, ScreenAndSceneConversionsRoundTrip) {
    auto camera = FLKCamera::cameraWithFrame({0, 0, 720, 720});
    camera->setScale(2.0, {0, 0});
    camera->moveTo({100, 50});
    expectRect(camera->frame(), {100, 50, 360, 360});

    expectPoint(camera->scenePointForScreenPoint({20, 40}), {110, 70});
    expectPoint(camera->screenPointFromScenePoint({110, 70}), {20, 40});
    FLKPoint odd{123.25, -7.5};
    expectPoint(camera->screenPointFromScenePoint(camera->scenePointForScreenPoint(odd)), odd);

    FLKRect screen{20, 40, 100, 60};
    expectRect(camera->sceneRectFromScreenRect(screen), {110, 70, 50, 30});
    expectRect(camera->screenRectFromSceneRect(camera->sceneRectFromScreenRect(screen)), screen);
}

TEST(FLKCamera, ScalingKeepsTheScenePointUnderTheReferencePoint) {
    auto camera = FLKCamera::cameraWithFrame({0, 0, 720, 720});
    FLKPoint reference{180, 540};
    FLKPoint before = camera->scenePointForScreenPoint(reference);
    camera->scaleBy(1.0, reference);
    EXPECT_EQ(camera->scale(), 2.0);
    expectPoint(camera->scenePointForScreenPoint(reference), before);
    EXPECT_NEAR(camera->frame().size.width, 360, 1e-9);
}

TEST(FLKCamera, MoveByIsInScreenUnits) {
    auto camera = FLKCamera::cameraWithFrame({0, 0, 720, 720});
    camera->setScale(2.0, {0, 0});
    camera->moveBy({40, -20});
    expectPoint(camera->frame().origin, {-20, 10});
}

TEST(FLKCamera, ViewportSizeRederivesTheFrameAtTheCurrentScale) {
    auto camera = FLKCamera::cameraWithFrame({30, 40, 720, 720});
    camera->setScale(2.0, {0, 0});
    camera->setViewportSize({1080, 1920}, true);
    expectRect(camera->viewport(), {0, 0, 1080, 1920});
    expectRect(camera->frame(), {30, 40, 540, 960});
    EXPECT_EQ(camera->contextSize(), (FLKSize{1080, 1920}));
}

TEST(FLKCamera, FocusFitsTheShapeHeight) {
    FLKCamera camera;
    camera.setViewportSize({720, 720}, false);
    camera.focus(FLKPlane::planeWithFrame({500, 500, 360, 1440}));
    EXPECT_EQ(camera.scale(), 0.5);
    // Centred on a shape at the origin: the bounds origin is not added.
    expectRect(camera.frame(), {-540, 0, 1440, 1440});

    camera.focus(nullptr);
    EXPECT_EQ(camera.scale(), 16.0);
}

TEST(FLKCamera, StoresOnlyTheFrameAndComparesByIt) {
    auto camera = FLKCamera::cameraWithFrame({1, 2, 300, 400});
    camera->setScale(3.0);
    auto dictionary = camera->serialized();
    EXPECT_EQ(dictionary["frame"], FLKRect(camera->frame()).dictionaryRepresentation());
    EXPECT_FALSE(dictionary.contains("scale"));

    auto back = std::dynamic_pointer_cast<FLKCamera>(FLKObject::newWithDictionary(dictionary));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->scale(), 1.0);
    EXPECT_EQ(back->frame(), camera->frame());
    EXPECT_TRUE(back->isEqual(*camera));
    EXPECT_EQ(back->hash(), camera->hash());

    auto moved = camera->copyAs<FLKCamera>();
    moved->moveTo({5, 5});
    EXPECT_FALSE(moved->isEqual(*camera));
    EXPECT_NE(moved->hash(), camera->hash());
}

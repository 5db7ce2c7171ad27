// Analytic coverage against the 4x multisampled frame it stands in for.
#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

#include "FLKRenderTestSupport.h"
#include "core/render/FLKCoverageQuad.h"
#include "core/scene/FLKTexturedSprite.h"

namespace {
using Antialiasing = FLKRenderer::Antialiasing;

// The camera a scene of `width` x `height` sees itself through.
FLKCoverageQuad::Matrix cameraMatrix(double width, double height) {
    return FLKCamera::cameraWithFrame({0, 0, width, height})->uniforms();
}

double distanceToLine(FLKPoint p, FLKPoint a, FLKPoint b) {
    double dx = b.x - a.x, dy = b.y - a.y;
    return std::abs((p.x - a.x) * dy - (p.y - a.y) * dx) / std::hypot(dx, dy);
}

TEST(FLKCoverageQuadTest, EdgesInteriorAndRingFollowTheQuadOnScreen) {
    // Scene 200 x 100 shown on 400 x 200 pixels: window coordinates are twice the scene's.
    const FLKPoint tl{20, 10}, tr{180, 20}, br{170, 90}, bl{30, 80};
    auto quad = FLKCoverageQuad::make(tl, tr, br, bl, cameraMatrix(200, 100), 400, 200);
    ASSERT_TRUE(quad);
    ASSERT_TRUE(quad->hasInterior());
    const std::array<FLKPoint, 4> corners{tl, tr, br, bl};
    auto window = [](FLKPoint p) { return FLKPoint{p.x * 2, p.y * 2}; };
    const auto& edges = quad->edges();
    for (size_t e = 0; e < 4; ++e) {
        EXPECT_NEAR(std::hypot(edges[4 * e], edges[4 * e + 1]), 1.0, 1e-6);
        FLKPoint centre = window({100, 50});
        EXPECT_GT(edges[4 * e] * centre.x + edges[4 * e + 1] * centre.y + edges[4 * e + 2], 0) << "edge " << e;
        FLKPoint start = window(corners[e]), end = window(corners[(e + 1) % 4]);
        for (size_t c = 0; c < 4; ++c) {
            // The corner between edge c - 1 and edge c sits kInset inside and kOutset outside both.
            if (c != e && (c + 3) % 4 != e) continue;
            FLKPoint inner = window(quad->innerCorners()[c]);
            FLKPoint outer = window(quad->outerCorners()[c]);
            EXPECT_NEAR(distanceToLine(inner, start, end), FLKCoverageQuad::kInset, 1e-4);  // through the camera's float matrix
            EXPECT_NEAR(distanceToLine(outer, start, end), FLKCoverageQuad::kOutset, 1e-4);
        }
    }
}

TEST(FLKCoverageQuadTest, ThinQuadsHaveNoInteriorAndConcaveOrPerspectiveCamerasNone) {
    auto matrix = cameraMatrix(100, 100);
    auto thin = FLKCoverageQuad::make({10, 10}, {90, 10}, {90, 11}, {10, 11}, matrix, 100, 100);
    ASSERT_TRUE(thin);
    EXPECT_FALSE(thin->hasInterior());
    EXPECT_EQ(thin->innerCorners()[2].x, 90);  // drawn whole, with coverage
    EXPECT_FALSE(FLKCoverageQuad::make({0, 0}, {10, 0}, {2, 2}, {0, 10}, matrix, 100, 100));
    auto perspective = matrix;
    perspective[3] = 0.01f;
    EXPECT_FALSE(FLKCoverageQuad::make({0, 0}, {10, 0}, {10, 10}, {0, 10}, perspective, 100, 100));
}

TEST(FLKCoverageQuadTest, RingRecordsExtendTheQuadsOwnMaps) {
    auto matrix = cameraMatrix(100, 100);
    // Texture coordinates: the homography's, beyond the edges too. Along a
    // line parallel to the parallel top and bottom of a trapezoid the map is
    // affine, so u runs linearly between the extended side edges.
    FLKPlane plane({20, 20}, {80, 20}, {10, 80}, {90, 80}, 1);
    auto textured = FLKCoverageQuad::texturedGeometry(plane, matrix, 100, 100);
    ASSERT_TRUE(textured);
    EXPECT_FALSE(textured->interiorHasHole);
    for (const auto& vertex : textured->band) {
        double x = vertex.position[0] / vertex.position[3], y = vertex.position[1] / vertex.position[3];
        double left = 20 - 10 * (y - 20) / 60, right = 80 + 10 * (y - 20) / 60;
        EXPECT_NEAR(vertex.texCoord[0], (x - left) / (right - left), 1e-5);
    }
    // Colours: a parallelogram whose corner colours are affine stays affine.
    std::array<FLKColoredVertex, 4> corners{};
    const FLKPoint points[4] = {{10, 10}, {60, 10}, {20, 50}, {70, 50}};
    for (size_t i = 0; i < 4; ++i) {
        corners[i] = FLKColoredVertex{{float(points[i].x), float(points[i].y), 0, 1},
                                      {float(points[i].x / 100), float(points[i].y / 100), 0.5f, 1},
                                      {0, 0},
                                      {0, 0}};
    }
    auto colored = FLKCoverageQuad::coloredGeometry(corners, matrix, 100, 100);
    ASSERT_TRUE(colored);
    EXPECT_FALSE(colored->interiorNeedsCoverage);
    for (const auto& vertex : colored->band) {
        EXPECT_NEAR(vertex.color[0], vertex.position[0] / 100, 1e-5);
        EXPECT_NEAR(vertex.color[1], vertex.position[1] / 100, 1e-5);
    }
}

// ---- Frames drawn both ways ----

// An RGBA8 texture whose pixels `paint` fills; they start transparent black.
std::shared_ptr<FLKGPUTexture> paintedTexture(int width, int height,
                                              const std::function<void(int x, int y, uint8_t* rgba)>& paint) {
    std::vector<uint8_t> pixels(size_t(width) * height * 4, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) paint(x, y, &pixels[(size_t(y) * width + x) * 4]);
    }
    return std::make_shared<FLKGPUTexture>(width, height, FLKPixelFormat::RGBA8, std::move(pixels));
}

std::shared_ptr<FLKGPUTexture> checkerTexture(int size, int cell) {
    return paintedTexture(size, size, [&](int x, int y, uint8_t* p) {
        bool dark = ((x / cell) + (y / cell)) % 2;
        p[0] = dark ? 20 : 230;
        p[1] = uint8_t(x * 255 / size);
        p[2] = uint8_t(y * 255 / size);
        p[3] = 255;
    });
}

// A bezel of premultiplied half-transparent grey around a transparent opening.
std::shared_ptr<FLKGPUTexture> artworkTexture(int width, int height, int border) {
    return paintedTexture(width, height, [&](int x, int y, uint8_t* p) {
        if (x >= border && x < width - border && y >= border && y < height - border) return;
        p[0] = p[1] = p[2] = 60;
        p[3] = 200;
    });
}

// Device artwork as the templates draw it: a canvas-sized, mostly transparent
// picture holding an opaque bezel around a transparent opening and a soft
// premultiplied black shadow falling off around the body.
std::shared_ptr<FLKGPUTexture> canvasArtworkTexture(int width, int height, const FLKRect& body, int bezel) {
    return paintedTexture(width, height, [&](int x, int y, uint8_t* p) {
        double dx = std::max({body.origin.x - (x + 0.5), (x + 0.5) - body.maxX(), 0.0});
        double dy = std::max({body.origin.y - (y + 0.5), (y + 0.5) - body.maxY(), 0.0});
        double outside = std::hypot(dx, dy);
        if (outside > 0) {
            p[3] = uint8_t(std::lround(110 * std::exp(-outside / 45)));  // black: colour stays 0
            return;
        }
        bool inOpening = x >= body.origin.x + bezel && x < body.maxX() - bezel && y >= body.origin.y + bezel &&
                         y < body.maxY() - bezel;
        if (inOpening) return;
        p[0] = p[1] = p[2] = 35;
        p[3] = 255;
    });
}

// Alpha 1 inside a rectangle with rounded corners, 0 outside.
std::shared_ptr<FLKGPUTexture> roundedMaskTexture(int width, int height, double radius) {
    return paintedTexture(width, height, [&](int x, int y, uint8_t* p) {
        double cx = std::clamp(x + 0.5, radius, width - radius), cy = std::clamp(y + 0.5, radius, height - radius);
        if (std::hypot(x + 0.5 - cx, y + 0.5 - cy) <= radius) std::fill_n(p, 4, uint8_t(255));
    });
}

class FLKAnalyticCoverageTest : public ::testing::Test {
protected:
    static constexpr int kWidth = 180, kHeight = 320;

    void SetUp() override {
        std::string reason;
        ASSERT_TRUE(FLKContext::isGPUSupported(&reason)) << "no OpenGL 4.5: " << reason;
        target = std::make_shared<FLKTestTarget>(kWidth, kHeight);
        renderer = std::make_unique<FLKRenderer>(target->context);
        renderer->setDataSource(target);
    }
    void TearDown() override { renderer.reset(); }

    FLKImage render(const std::shared_ptr<FLKScene>& scene, Antialiasing antialiasing) {
        renderer->setAntialiasing(antialiasing);
        return target->renderScene(*renderer, scene);
    }

    // The export scene in small: gradient, perspective video quad, artwork on top.
    std::shared_ptr<FLKScene> exportScene(bool opaqueBackground = true) {
        auto scene = sceneWithCameraFrame({0, 0, kWidth, kHeight});
        const double alpha = opaqueBackground ? 1 : 0.6;
        scene->addChild(gradientSprite({0, 0, kWidth, kHeight}, {{0.2, 0.3, 0.9, alpha},
                                                                 {0.5, 0.2, 0.8, alpha},
                                                                 {0.9, 0.4, 0.3, alpha},
                                                                 {0.95, 0.8, 0.2, alpha}}));
        auto video = std::make_shared<FLKTexturedSprite>(checkerTexture(96, 8));
        video->setShape(std::make_shared<FLKPlane>(FLKPoint{25.3, 38.6}, FLKPoint{155.1, 30.2},
                                                   FLKPoint{28.7, 283.4}, FLKPoint{150.2, 293.9}));
        scene->addChild(video);
        auto artwork = std::make_shared<FLKTexturedSprite>(artworkTexture(150, 283, 12));
        artwork->setShape(FLKPlane::planeWithFrame({15, 18.5, 150, 283}));
        scene->addChild(artwork);
        return scene;
    }

    static int largestDifference(const FLKImage& a, const FLKImage& b, int* count = nullptr, int over = 2) {
        int worst = 0;
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) {
                int d = channelDifference(a, x, y, b.pixel(x, y));
                if (d > worst) {
                    worst = d;
                    const uint8_t *p = a.pixel(x, y), *q = b.pixel(x, y);
                    RecordProperty("worst_pixel", std::to_string(x) + "," + std::to_string(y) + ": " +
                                                      std::to_string(p[0]) + " " + std::to_string(p[1]) + " " +
                                                      std::to_string(p[2]) + " " + std::to_string(p[3]) + " vs " +
                                                      std::to_string(q[0]) + " " + std::to_string(q[1]) + " " +
                                                      std::to_string(q[2]) + " " + std::to_string(q[3]));
                }
                if (count && d > over) ++*count;
            }
        }
        return worst;
    }

    void expectSameFrame(const std::shared_ptr<FLKScene>& scene, const std::string& name, double minimumPSNR,
                         int maximumDifference) {
        FLKImage multisampled = render(scene, Antialiasing::multisample);
        ASSERT_FALSE(renderer->lastFrameUsedAnalyticCoverage());
        FLKImage analytic = render(scene, Antialiasing::analyticCoverage);
        ASSERT_TRUE(renderer->lastFrameUsedAnalyticCoverage());
        const int width = analytic.width, height = analytic.height;
        std::vector<bool> everywhere(size_t(width) * height, true);
        double value = psnr(analytic, multisampled, everywhere);
        int differing = 0;
        int worst = largestDifference(analytic, multisampled, &differing);
        RecordProperty("psnr", std::to_string(value));
        RecordProperty("largest_difference", std::to_string(worst));
        EXPECT_GE(value, minimumPSNR) << writeComparisonImages(name, analytic, multisampled);
        EXPECT_LE(worst, maximumDifference) << writeComparisonImages(name, analytic, multisampled);
        // Beyond rounding, only pixels where two nodes' edges meet may differ.
        EXPECT_LE(differing, width * height / 200) << writeComparisonImages(name, analytic, multisampled);
    }

    std::shared_ptr<FLKTestTarget> target;
    std::unique_ptr<FLKRenderer> renderer;
};

TEST_F(FLKAnalyticCoverageTest, ExportSceneMatchesTheMultisampledFrame) {
    expectSameFrame(exportScene(), "export-scene", 45, 64);
}

TEST_F(FLKAnalyticCoverageTest, TranslucentBackgroundMatchesTheMultisampledFrame) {
    expectSameFrame(exportScene(false), "translucent-scene", 45, 64);
}

TEST_F(FLKAnalyticCoverageTest, CanvasSizedArtworkAtExportSizeMatchesTheMultisampledFrame) {
    // Large stretches of the artwork's transparent texels over the gradient:
    // every 64 x 64 tile there must keep the gradient as it is.
    constexpr int width = 1080, height = 1920;
    target->resize(width, height);
    auto scene = sceneWithCameraFrame({0, 0, width, height});
    scene->addChild(gradientSprite({0, 0, width, height}, {{0.40, 0.90, 0.70, 1},
                                                           {0.15, 0.75, 0.65, 1},
                                                           {0.05, 0.45, 0.35, 1},
                                                           {0.02, 0.25, 0.20, 1}}));
    auto video = std::make_shared<FLKTexturedSprite>(checkerTexture(256, 16));
    video->setMaskTexture(roundedMaskTexture(128, 256, 14));
    video->setShape(std::make_shared<FLKPlane>(FLKPoint{262.4, 371.8}, FLKPoint{818.3, 402.6}, FLKPoint{251.7, 1561.2},
                                               FLKPoint{806.9, 1528.4}));
    scene->addChild(video);
    const FLKRect body{220, 330, 640, 1260};
    auto artwork = std::make_shared<FLKTexturedSprite>(canvasArtworkTexture(width, height, body, 28));
    artwork->setShape(FLKPlane::planeWithFrame({0, 0, width, height}));
    scene->addChild(artwork);
    expectSameFrame(scene, "canvas-artwork", 45, 64);

    // The opening really was left out, so the transparent texels are drawn as pieces around it.
    FLKContext::Scope scope(*target->context);
    EXPECT_TRUE(artwork->texture()->transparentRect());
}

TEST_F(FLKAnalyticCoverageTest, LoneEdgesMatchTheSamplesPixelForPixel) {
    // Rotated and thin quads over a gradient, no two edges in one pixel:
    // every pixel is what averaging the four samples gives, up to rounding.
    auto scene = sceneWithCameraFrame({0, 0, kWidth, kHeight});
    scene->addChild(gradientSprite({0, 0, kWidth, kHeight}, {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, {1, 1, 0, 1}}));
    auto rotated = gradientSprite({0, 0, 1, 1}, {{1, 1, 1, 1}, {0, 0, 1, 1}, {1, 0, 1, 1}, {0, 1, 1, 0.5}});
    rotated->setShape(std::make_shared<FLKPlane>(FLKPoint{90.3, 20.7}, FLKPoint{160.2, 90.1}, FLKPoint{20.9, 90.4},
                                                 FLKPoint{90.6, 160.8}, 1));
    scene->addChild(rotated);
    auto thin = solidSprite({0, 0, 1, 1}, {1, 1, 1, 1});
    thin->setShape(std::make_shared<FLKPlane>(FLKPoint{20.2, 200.3}, FLKPoint{160.7, 230.1}, FLKPoint{20.2, 201.1},
                                              FLKPoint{160.7, 230.9}, 1));
    scene->addChild(thin);
    FLKImage multisampled = render(scene, Antialiasing::multisample);
    FLKImage analytic = render(scene, Antialiasing::analyticCoverage);
    ASSERT_TRUE(renderer->lastFrameUsedAnalyticCoverage());
    EXPECT_LE(FLKAnalyticCoverageTest::largestDifference(analytic, multisampled), 2) << writeComparisonImages("lone-edges", analytic, multisampled);
    // The edges are antialiased: the thin line is partly covered along its length.
    int partial = 0;
    for (int y = 195; y < 240; ++y) {
        uint8_t blue = analytic.pixel(90, y)[2];
        if (blue > 10 && blue < 245) ++partial;
    }
    EXPECT_GE(partial, 1);
}

TEST_F(FLKAnalyticCoverageTest, TransparentOpeningOfArtworkLeavesWhatIsBehindUntouched) {
    auto artwork = artworkTexture(150, 283, 12);
    FLKContext::Scope scope(*target->context);
    ASSERT_NE(artwork->name(), 0u);
    auto opening = artwork->transparentRect();
    ASSERT_TRUE(opening);
    EXPECT_EQ(opening->x0, 12);
    EXPECT_EQ(opening->y0, 12);
    EXPECT_EQ(opening->x1, 138);
    EXPECT_EQ(opening->y1, 271);
    auto opaque = checkerTexture(32, 4);
    ASSERT_NE(opaque->name(), 0u);
    EXPECT_FALSE(opaque->transparentRect());

    auto scene = sceneWithCameraFrame({0, 0, kWidth, kHeight});
    scene->addChild(gradientSprite({0, 0, kWidth, kHeight}, {{0.1, 0.2, 0.3, 1}, {0.9, 0.2, 0.3, 1},
                                                             {0.1, 0.8, 0.3, 1}, {0.9, 0.8, 0.7, 1}}));
    FLKImage behind = render(scene, Antialiasing::analyticCoverage);
    auto sprite = std::make_shared<FLKTexturedSprite>(artwork);
    sprite->setShape(FLKPlane::planeWithFrame({15, 18.5, 150, 283}));
    scene->addChild(sprite);
    FLKImage framed = render(scene, Antialiasing::analyticCoverage);
    for (int y = 18 + 14; y < 18 + 283 - 14; y += 3) {
        for (int x = 15 + 14; x < 15 + 150 - 14; x += 3) {
            ASSERT_EQ(channelDifference(framed, x, y, behind.pixel(x, y)), 0) << x << ", " << y;
        }
    }
    EXPECT_GT(channelDifference(framed, 20, 150, behind.pixel(20, 150)), 20);  // the bezel is drawn
}

TEST_F(FLKAnalyticCoverageTest, ConcavePlanesAndPlaneGridsAreMultisampled) {
    auto scene = sceneWithCameraFrame({0, 0, kWidth, kHeight});
    auto concave = std::make_shared<FLKTexturedSprite>(checkerTexture(32, 4));
    concave->setShape(std::make_shared<FLKPlane>(FLKPoint{10, 10}, FLKPoint{170, 10}, FLKPoint{10, 300},
                                                 FLKPoint{40, 40}));
    scene->addChild(concave);
    render(scene, Antialiasing::analyticCoverage);
    EXPECT_FALSE(renderer->lastFrameUsedAnalyticCoverage());
    EXPECT_NE(renderer->multisampleTexture(), nullptr);

    auto convex = exportScene();
    renderer->setTexturedGeometry(FLKRenderer::TexturedGeometry::planeGrids);
    render(convex, Antialiasing::analyticCoverage);
    EXPECT_FALSE(renderer->lastFrameUsedAnalyticCoverage());
}

TEST_F(FLKAnalyticCoverageTest, CoverageCountsTheRasterisersOwnSamplePositions) {
    // The coverage shader counts the standard 4x positions; a driver with other
    // positions would antialias differently from its own multisampling.
    FLKContext::Scope scope(*target->context);
    GLuint renderbuffer = 0, framebuffer = 0;
    glCreateRenderbuffers(1, &renderbuffer);
    glNamedRenderbufferStorageMultisample(renderbuffer, 4, GL_RGBA8, 8, 8);
    glCreateFramebuffers(1, &framebuffer);
    glNamedFramebufferRenderbuffer(framebuffer, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, renderbuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    const float expected[4][2] = {{0.375f, 0.125f}, {0.875f, 0.375f}, {0.125f, 0.625f}, {0.625f, 0.875f}};
    for (GLuint i = 0; i < 4; ++i) {
        float position[2] = {-1, -1};
        glGetMultisamplefv(GL_SAMPLE_POSITION, i, position);
        EXPECT_FLOAT_EQ(position[0], expected[i][0]) << "sample " << i;
        EXPECT_FLOAT_EQ(position[1], expected[i][1]) << "sample " << i;
    }
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteRenderbuffers(1, &renderbuffer);
}
}  // namespace

TEST_F(FLKAnalyticCoverageTest, MultisampledFramesTakeTheSampleCountAsked) {
    // An opaque quad at a slant on nothing: along its edges a pixel can only
    // be as opaque as the share of its samples inside, in steps of 1 / count.
    auto scene = sceneWithCameraFrame({0, 0, kWidth, kHeight});
    auto quad = solidSprite({0, 0, 1, 1}, {1, 1, 1, 1});
    quad->setShape(std::make_shared<FLKPlane>(FLKPoint{90.3, 20.7}, FLKPoint{160.2, 90.1}, FLKPoint{20.9, 90.4},
                                              FLKPoint{90.6, 160.8}, 1));
    scene->addChild(quad);
    // (Mesa's rasteriser gives 4 samples when asked for 2.)
    for (int count : {1, 4}) {
        renderer->setMultisampleCount(count);
        FLKImage frame = render(scene, Antialiasing::multisample);
        ASSERT_NE(renderer->multisampleTexture(), nullptr);
        EXPECT_EQ(renderer->multisampleTexture()->sampleCount(), count);
        std::set<int> steps;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) steps.insert((frame.pixel(x, y)[3] * count + 127) / 255);
        EXPECT_EQ(steps.size(), static_cast<size_t>(count + 1)) << count;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const int value = frame.pixel(x, y)[3];
                ASSERT_LE(std::abs(value * count - (value * count + 127) / 255 * 255), count * 2) << count;
            }
    }
}

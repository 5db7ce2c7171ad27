#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <utility>

#include "FLKRenderTestSupport.h"
#include "core/platform/FLKLog.h"
#include "core/render/FLKProjectiveQuad.h"
#include "core/gpu/FLKBiplanarTexture.h"
#include "core/scene/FLKTexturedSprite.h"

namespace {
const FLKColor kRed{1, 0, 0, 1}, kGreen{0, 1, 0, 1}, kBlue{0, 0, 1, 1}, kWhite{1, 1, 1, 1};
const uint8_t kRedRGBA[4] = {255, 0, 0, 255}, kGreenRGBA[4] = {0, 255, 0, 255}, kBlueRGBA[4] = {0, 0, 255, 255},
              kWhiteRGBA[4] = {255, 255, 255, 255}, kClearRGBA[4] = {0, 0, 0, 0};

class FLKRendererTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string reason;
        ASSERT_TRUE(FLKContext::isGPUSupported(&reason)) << "no OpenGL 4.5: " << reason;
        target = std::make_shared<FLKTestTarget>(64, 64);
        renderer = std::make_unique<FLKRenderer>(target->context);
        renderer->setDataSource(target);
    }
    void TearDown() override { renderer.reset(); }

    std::shared_ptr<FLKTestTarget> target;
    std::unique_ptr<FLKRenderer> renderer;
};

TEST_F(FLKRendererTest, GradientCornersAndTopRowFirst) {
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    scene->addChild(gradientSprite({0, 0, 64, 64}, {kRed, kGreen, kBlue, kWhite}));
    FLKImage image = target->renderScene(*renderer, scene);
    ASSERT_EQ(image.width, 64);
    EXPECT_LE(channelDifference(image, 0, 0, kRedRGBA), 12);
    EXPECT_LE(channelDifference(image, 63, 0, kGreenRGBA), 12);
    EXPECT_LE(channelDifference(image, 0, 63, kBlueRGBA), 12);
    EXPECT_LE(channelDifference(image, 63, 63, kWhiteRGBA), 12);
}

// A frame with nothing to draw into gives its slot back: a renderer of three
// slots still draws after more such frames than it has slots.
TEST_F(FLKRendererTest, FramesWithoutATargetDoNotBlockLaterOnes) {
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    scene->addChild(solidSprite({0, 0, 64, 64}, kGreen));
    renderer->setScene(scene);
    auto texture = std::exchange(target->texture, nullptr);
    for (int frame = 0; frame < 5; ++frame) EXPECT_FALSE(renderer->render()) << "frame " << frame;
    target->texture = texture;
    FLKImage image = target->renderScene(*renderer, scene);
    EXPECT_EQ(channelDifference(image, 32, 32, kGreenRGBA), 0);
}

TEST_F(FLKRendererTest, HigherZOrderCoversLowerWhateverTheInsertionOrder) {
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    auto front = solidSprite({0, 0, 32, 64}, kGreen);
    auto back = solidSprite({0, 0, 64, 64}, kRed);
    scene->addChild(front);
    scene->addChild(back);
    front->setZOrder(10);
    back->setZOrder(5);
    FLKImage image = target->renderScene(*renderer, scene);
    EXPECT_EQ(channelDifference(image, 10, 30, kGreenRGBA), 0);
    EXPECT_EQ(channelDifference(image, 50, 30, kRedRGBA), 0);
}

TEST_F(FLKRendererTest, CameraFrameChoosesThePartOfTheSceneShown) {
    auto scene = sceneWithCameraFrame({100, 0, 100, 100});
    scene->addChild(solidSprite({0, 0, 100, 100}, kRed));
    scene->addChild(solidSprite({100, 0, 100, 100}, kGreen));
    scene->addChild(solidSprite({0, 100, 100, 100}, kBlue));
    scene->addChild(solidSprite({100, 100, 100, 100}, kWhite));
    FLKImage image = target->renderScene(*renderer, scene);
    for (auto [x, y] : {std::pair{0, 0}, {63, 0}, {0, 63}, {63, 63}, {32, 32}}) {
        EXPECT_EQ(channelDifference(image, x, y, kGreenRGBA), 0) << x << "," << y;
    }
}

TEST_F(FLKRendererTest, TexturedSpriteWithoutTextureIsSkippedAndTheGradientInFrontDrawn) {
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    auto untextured = std::make_shared<FLKTexturedSprite>();
    untextured->setShape(FLKPlane::planeWithFrame({0, 0, 64, 64}));
    scene->addChild(untextured);
    scene->addChild(solidSprite({32, 0, 32, 64}, kBlue));
    FLKImage image = target->renderScene(*renderer, scene);
    EXPECT_EQ(channelDifference(image, 10, 10, kClearRGBA), 0);
    EXPECT_EQ(channelDifference(image, 50, 10, kBlueRGBA), 0);
}

TEST_F(FLKRendererTest, MaskedPipelineMultipliesByTheMaskAlpha) {
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    std::vector<uint8_t> white(16 * 16 * 4, 255);
    std::vector<uint8_t> mask(16 * 16 * 4, 255);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 8; ++x) mask[(y * 16 + x) * 4 + 3] = 0;  // left half transparent
    }
    auto sprite = std::make_shared<FLKTexturedSprite>(
        std::make_shared<FLKGPUTexture>(16, 16, FLKPixelFormat::RGBA8, std::move(white)));
    sprite->setShape(FLKPlane::planeWithFrame({0, 0, 64, 64}));
    sprite->setMaskTexture(std::make_shared<FLKGPUTexture>(16, 16, FLKPixelFormat::RGBA8, std::move(mask)));
    scene->addChild(sprite);
    FLKImage image = target->renderScene(*renderer, scene);
    EXPECT_EQ(channelDifference(image, 5, 30, kClearRGBA), 0);
    EXPECT_EQ(channelDifference(image, 58, 30, kWhiteRGBA), 0);
}

// Drawn from its planes, a frame shows the colours its own matrix and range
// give: the uniforms of the colorimetry reach the draw.
TEST_F(FLKRendererTest, NV12FramesDrawThroughTheYUVPipelineInTheirOwnColorimetry) {
    const uint8_t y = 120, cb = 100, cr = 160;
    auto planes = std::make_shared<std::vector<uint8_t>>(16 * 16 + 16 * 8, y);
    for (size_t i = 16 * 16; i < planes->size(); i += 2) {
        (*planes)[i] = cb;
        (*planes)[i + 1] = cr;
    }
    FLKNV12Frame frame{16, 16, planes->data(), 16, planes->data() + 16 * 16, 16, planes};
    auto biplanar = std::make_shared<FLKBiplanarTexture>(frame, 0.0);
    {
        FLKContext::Scope scope(*target->context);
        biplanar->refreshTexture();
    }
    auto luma = biplanar->texture();
    ASSERT_TRUE(luma);
    ASSERT_TRUE(luma->chromaPlane());
    auto sprite = std::make_shared<FLKTexturedSprite>(luma);
    sprite->setShape(FLKPlane::planeWithFrame({0, 0, 64, 64}));
    EXPECT_EQ(sprite->pipelineName(), FLKPipelineNameVertexFragmentTexturedYUV);
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    scene->addChild(sprite);

    struct Case {
        FLKColorMatrix matrix;
        FLKColorRange range;
        double kr, kb;
    };
    for (const Case c : {Case{FLKColorMatrix::BT709, FLKColorRange::Limited, 0.2126, 0.0722},
                         Case{FLKColorMatrix::BT601, FLKColorRange::Full, 0.299, 0.114}}) {
        SCOPED_TRACE(c.matrix == FLKColorMatrix::BT709 ? "BT.709 limited" : "BT.601 full");
        luma->setColorimetry(c.matrix, c.range);
        FLKImage image = target->renderScene(*renderer, scene);
        const bool full = c.range == FLKColorRange::Full;
        const double l = full ? y : (y - 16) * 255.0 / 219, scale = full ? 1.0 : 255.0 / 224;
        const double u = (cb - 128) * scale, v = (cr - 128) * scale;
        const double r = l + 2 * (1 - c.kr) * v, b = l + 2 * (1 - c.kb) * u;
        const double g = (l - c.kr * r - c.kb * b) / (1 - c.kr - c.kb);
        auto channel = [](double value) { return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0))); };
        const uint8_t expected[4] = {channel(r), channel(g), channel(b), 255};
        EXPECT_LE(channelDifference(image, 32, 32, expected), 3);
    }
}

TEST_F(FLKRendererTest, ResizingTheTargetReplacesTheMultisampleTexture) {
    renderer->setAntialiasing(FLKRenderer::Antialiasing::multisample);
    auto scene = sceneWithCameraFrame({0, 0, 64, 64});
    scene->addChild(gradientSprite({0, 0, 64, 64}, {kRed, kGreen, kBlue, kWhite}));
    target->renderScene(*renderer, scene);
    ASSERT_NE(renderer->multisampleTexture(), nullptr);
    EXPECT_EQ(renderer->multisampleTexture()->width(), 64);

    target->resize(40, 24);
    FLKImage image = target->renderScene(*renderer, scene);
    ASSERT_NE(renderer->multisampleTexture(), nullptr);
    EXPECT_EQ(renderer->multisampleTexture()->width(), 40);
    EXPECT_EQ(renderer->multisampleTexture()->height(), 24);
    EXPECT_TRUE(renderer->multisampleTextureFitsFramebufferTexture(*target->texture));
    EXPECT_LE(channelDifference(image, 39, 23, kWhiteRGBA), 16);
}

TEST_F(FLKRendererTest, MissingFramebufferTextureIsLoggedAndNothingDrawn) {
    std::vector<std::string> lines;
    flk::setLogSink([&](const std::string& line) { lines.push_back(line); });
    target->texture = nullptr;
    target->renderScene(*renderer, sceneWithCameraFrame({0, 0, 64, 64}));
    flk::setLogSink({});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("No framebuffer texture present"), std::string::npos);
    EXPECT_EQ(renderer->multisampleTexture(), nullptr);
}

// ---- A checkerboard warped onto a quad, against an independent CPU warp ----

struct Homography {
    double m[9];  // row-major, maps (u, v, 1) in the unit square to the quad

    static Homography squareToQuad(FLKPoint p0, FLKPoint p1, FLKPoint p2, FLKPoint p3) {
        // Solves the eight unknowns directly from the four correspondences.
        const double uv[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        const FLKPoint p[4] = {p0, p1, p2, p3};
        double a[8][9] = {};
        for (int i = 0; i < 4; ++i) {
            double u = uv[i][0], v = uv[i][1], x = p[i].x, y = p[i].y;
            double r0[9] = {u, v, 1, 0, 0, 0, -u * x, -v * x, x};
            double r1[9] = {0, 0, 0, u, v, 1, -u * y, -v * y, y};
            std::copy(r0, r0 + 9, a[2 * i]);
            std::copy(r1, r1 + 9, a[2 * i + 1]);
        }
        for (int c = 0; c < 8; ++c) {  // Gauss-Jordan with partial pivoting
            int pivot = c;
            for (int r = c + 1; r < 8; ++r) {
                if (std::abs(a[r][c]) > std::abs(a[pivot][c])) pivot = r;
            }
            std::swap(a[c], a[pivot]);
            for (int r = 0; r < 8; ++r) {
                if (r == c) continue;
                double f = a[r][c] / a[c][c];
                for (int k = c; k < 9; ++k) a[r][k] -= f * a[c][k];
            }
        }
        Homography h{};
        for (int i = 0; i < 8; ++i) h.m[i] = a[i][8] / a[i][i];
        h.m[8] = 1;
        return h;
    }

    std::optional<std::pair<double, double>> inverse(double x, double y) const {
        // Solve m * (u, v, 1) ~ (x, y, 1) for u, v.
        double a11 = m[0] - x * m[6], a12 = m[1] - x * m[7], b1 = x * m[8] - m[2];
        double a21 = m[3] - y * m[6], a22 = m[4] - y * m[7], b2 = y * m[8] - m[5];
        double det = a11 * a22 - a12 * a21;
        if (det == 0) return std::nullopt;
        return std::pair{(b1 * a22 - a12 * b2) / det, (a11 * b2 - b1 * a21) / det};
    }
};

FLKImage checkerboard(int size, int cell) {
    FLKImage image(size, size);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            bool dark = ((x / cell) + (y / cell)) % 2;
            uint8_t* p = image.pixel(x, y);
            p[0] = dark ? 30 : 240;
            p[1] = dark ? 60 : uint8_t(40 + 3 * x);
            p[2] = dark ? uint8_t(50 + 3 * y) : 20;
            p[3] = 255;
        }
    }
    return image;
}

// Linear filtering, clamped to the edge, as the default sampler does.
void sampleBilinear(const FLKImage& image, double u, double v, uint8_t out[4]) {
    double x = u * image.width - 0.5, y = v * image.height - 0.5;
    int x0 = int(std::floor(x)), y0 = int(std::floor(y));
    double fx = x - x0, fy = y - y0;
    auto at = [&](int xi, int yi, int c) {
        xi = std::clamp(xi, 0, image.width - 1);
        yi = std::clamp(yi, 0, image.height - 1);
        return double(image.pixel(xi, yi)[c]);
    };
    for (int c = 0; c < 4; ++c) {
        double top = at(x0, y0, c) * (1 - fx) + at(x0 + 1, y0, c) * fx;
        double bottom = at(x0, y0 + 1, c) * (1 - fx) + at(x0 + 1, y0 + 1, c) * fx;
        out[c] = uint8_t(std::lround(top * (1 - fy) + bottom * fy));
    }
}

class FLKWarpTest : public FLKRendererTest {
protected:
    static constexpr int kSize = 256;
    const FLKPoint tl{20, 14}, tr{236, 48}, br{200, 244}, bl{34, 196};

    void SetUp() override {
        FLKRendererTest::SetUp();
        if (IsSkipped()) return;
        target->resize(kSize, kSize);
        board = checkerboard(64, 8);
        std::vector<uint8_t> pixels = board.rgba;
        auto sprite = std::make_shared<FLKTexturedSprite>(
            std::make_shared<FLKGPUTexture>(64, 64, FLKPixelFormat::RGBA8, std::move(pixels)));
        sprite->setShape(std::make_shared<FLKPlane>(tl, tr, bl, br));
        scene = sceneWithCameraFrame({0, 0, kSize, kSize});
        scene->addChild(sprite);
        computeExpected();
    }

    // Pixels whose whole footprint lies well inside the quad.
    void computeExpected() {
        auto h = Homography::squareToQuad(tl, tr, br, bl);
        expected = FLKImage(kSize, kSize);
        inside.assign(size_t(kSize) * kSize, false);
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x) {
                auto uv = h.inverse(x + 0.5, y + 0.5);
                if (!uv) continue;
                const double margin = 0.02;
                auto [u, v] = *uv;
                if (u < margin || u > 1 - margin || v < margin || v > 1 - margin) continue;
                inside[size_t(y) * kSize + x] = true;
                sampleBilinear(board, u, v, expected.pixel(x, y));
            }
        }
    }

    void expectMatches(const FLKImage& actual, const std::string& name, double minimumPSNR) {
        double value = psnr(actual, expected, inside);
        RecordProperty("psnr", std::to_string(value));
        EXPECT_GE(value, minimumPSNR) << writeComparisonImages(name, actual, expected);
    }

    FLKImage board;
    FLKImage expected;
    std::vector<bool> inside;
    std::shared_ptr<FLKScene> scene;
};

TEST_F(FLKWarpTest, ProjectiveQuadMatchesTheInverseHomography) {
    renderer->setTexturedGeometry(FLKRenderer::TexturedGeometry::projectiveQuads);
    expectMatches(target->renderScene(*renderer, scene), "warp-projective", 35);
}

TEST_F(FLKWarpTest, VertexGridMatchesTheInverseHomography) {
    renderer->setTexturedGeometry(FLKRenderer::TexturedGeometry::planeGrids);
    expectMatches(target->renderScene(*renderer, scene), "warp-grid", 35);
}

TEST_F(FLKWarpTest, ProjectiveQuadDrawsWhatTheVertexGridDraws) {
    renderer->setTexturedGeometry(FLKRenderer::TexturedGeometry::planeGrids);
    FLKImage grid = target->renderScene(*renderer, scene);
    renderer->setTexturedGeometry(FLKRenderer::TexturedGeometry::projectiveQuads);
    FLKImage quad = target->renderScene(*renderer, scene);
    std::vector<bool> everywhere(size_t(kSize) * kSize, true);
    double value = psnr(quad, grid, everywhere);
    RecordProperty("psnr", std::to_string(value));
    EXPECT_GE(value, 40) << writeComparisonImages("quad-vs-grid", quad, grid);
}

TEST(FLKProjectiveQuadTest, ParallelogramsAreAffineAndConcaveQuadsFallBack) {
    auto parallelogram = FLKProjectiveQuad::cornerWeights({0, 0}, {10, 0}, {15, 5}, {5, 5});
    ASSERT_TRUE(parallelogram);
    for (double w : *parallelogram) EXPECT_DOUBLE_EQ(w, 1.0);
    auto trapezoid = FLKProjectiveQuad::cornerWeights({0, 0}, {10, 0}, {8, 5}, {2, 5});
    ASSERT_TRUE(trapezoid);
    EXPECT_GT((*trapezoid)[2], 1.0);  // the short far edge weighs more
    EXPECT_FALSE(FLKProjectiveQuad::cornerWeights({0, 0}, {10, 0}, {2, 2}, {0, 10}));  // concave
    EXPECT_FALSE(FLKProjectiveQuad::cornerWeights({0, 0}, {0, 0}, {10, 10}, {0, 10}));  // degenerate
}
}  // namespace

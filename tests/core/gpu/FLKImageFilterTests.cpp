#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/gpu/FLKDitherFilter.h"
#include "core/gpu/FLKFilterTestSupport.h"
#include "core/gpu/FLKGPUTestSupport.h"
#include "core/gpu/FLKGaussianBlur2DFilter.h"
#include "core/gpu/FLKTransition.h"
#include "core/platform/FLKLog.h"

using FLKImageFilterTest = FLKGLTest;

namespace {
std::vector<uint8_t> constantImage(int width, int height, std::array<uint8_t, 4> colour) {
    std::vector<uint8_t> rgba(static_cast<size_t>(width) * height * 4);
    for (size_t i = 0; i < rgba.size(); ++i) rgba[i] = colour[i % 4];
    return rgba;
}

// Smooth opaque ramps (no hard edges) that differ from each other everywhere.
std::vector<uint8_t> patternImage(int width, int height, int seed) {
    std::vector<uint8_t> rgba(static_cast<size_t>(width) * height * 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* p = &rgba[(static_cast<size_t>(y) * width + x) * 4];
            p[0] = static_cast<uint8_t>(x * 3 + seed * 40);
            p[1] = static_cast<uint8_t>(y * 3 + (1 - seed) * 50);
            p[2] = static_cast<uint8_t>(seed ? 230 - x : 20 + y);
            p[3] = 255;
        }
    }
    return rgba;
}

std::vector<uint8_t> outputOf(const FLKImageFilter& filter) {
    auto texture = filter.texture();
    return texture ? texture->readPixels() : std::vector<uint8_t>{};
}

const uint8_t* pixelAt(const std::vector<uint8_t>& rgba, int width, int x, int y) {
    return &rgba[(static_cast<size_t>(y) * width + x) * 4];
}
}  // namespace

TEST(FLKGaussianBlurWeights, FollowTheGaussianAndSumToOne) {
    // Radius 2: a 5x5 grid sampled at -2..2 with sigma 1.
    std::vector<float> weights = FLKGaussianBlur2DFilter::blurWeights(2, 1);
    ASSERT_EQ(weights.size(), 25u);
    double total = 0;
    for (int j = -2; j <= 2; ++j)
        for (int i = -2; i <= 2; ++i) total += std::exp(-(i * i + j * j) / 2.0);
    double sum = 0;
    for (int j = 0; j < 5; ++j) {
        for (int i = 0; i < 5; ++i) {
            double expected = std::exp(-((i - 2) * (i - 2) + (j - 2) * (j - 2)) / 2.0) / total;
            EXPECT_NEAR(weights[j * 5 + i], expected, 1e-6) << i << "," << j;
            sum += weights[j * 5 + i];
        }
    }
    EXPECT_NEAR(sum, 1.0, 1e-5);

    EXPECT_EQ(FLKGaussianBlur2DFilter::blurWeights(0, 0), std::vector<float>{1.0f});
    // Radius 2.6 rounds to a 7x7 grid whose samples still span -2.6..2.6.
    std::vector<float> wide = FLKGaussianBlur2DFilter::blurWeights(2.6f, 1.3f);
    ASSERT_EQ(wide.size(), 49u);
    double corner = std::exp(-(2 * 2.6 * 2.6) / (2 * 1.3 * 1.3));
    EXPECT_NEAR(wide[0] / wide[24], corner, 1e-5);
}

TEST_F(FLKImageFilterTest, BlurKeepsAConstantImageAndSpreadsAnImpulseByItsWeights) {
    auto blur = FLKGaussianBlur2DFilter::filterWithRadius(3);
    ASSERT_TRUE(blur);
    EXPECT_FLOAT_EQ(blur->sigma(), 1.5f);
    auto flat = std::make_shared<FLKFixedTextureProvider>(64, 64, constantImage(64, 64, {37, 150, 220, 255}));
    blur->setProvider(flat);
    std::vector<uint8_t> out = outputOf(*blur);
    ASSERT_EQ(out.size(), 64u * 64 * 4);
    EXPECT_LE(maximumDifference(out, constantImage(64, 64, {37, 150, 220, 255})), 1);

    // The weight texture holds exactly the weights, as 32-bit floats.
    GLuint weightTexture = blur->blurWeightTexture();
    ASSERT_NE(weightTexture, 0u);
    std::vector<float> stored(49);
    glGetTextureImage(weightTexture, 0, GL_RED, GL_FLOAT, static_cast<GLsizei>(stored.size() * 4), stored.data());
    EXPECT_EQ(stored, FLKGaussianBlur2DFilter::blurWeights(3, 1.5f));

    // A single white texel comes out as the weight grid itself.
    std::vector<uint8_t> impulse = constantImage(32, 32, {0, 0, 0, 255});
    for (int c = 0; c < 3; ++c) impulse[(16 * 32 + 16) * 4 + c] = 255;
    blur->setRadius(2);
    auto impulseSource = std::make_shared<FLKFixedTextureProvider>(32, 32, impulse);
    blur->setProvider(impulseSource);
    std::vector<uint8_t> spread = outputOf(*blur);
    ASSERT_EQ(spread.size(), 32u * 32 * 4);
    std::vector<float> weights = FLKGaussianBlur2DFilter::blurWeights(2, 1);
    for (int j = 0; j < 5; ++j) {
        for (int i = 0; i < 5; ++i) {
            const uint8_t* p = pixelAt(spread, 32, 14 + i, 14 + j);
            EXPECT_NEAR(p[0], weights[j * 5 + i] * 255, 1.0) << i << "," << j;
            EXPECT_EQ(p[3], 255);
        }
    }
    EXPECT_EQ(pixelAt(spread, 32, 13, 16)[0], 0);  // outside the window
}

TEST_F(FLKImageFilterTest, DitherUsesThirtyTwoLevelsAndKeepsEachTileAverage) {
    auto dither = FLKDitherFilter::filter();
    ASSERT_TRUE(dither);
    const std::array<uint8_t, 4> colour{100, 37, 201, 128};
    auto source = std::make_shared<FLKFixedTextureProvider>(16, 16, constantImage(16, 16, colour));
    dither->setProvider(source);
    std::vector<uint8_t> out = outputOf(*dither);
    ASSERT_EQ(out.size(), 16u * 16 * 4);
    for (int tileY = 0; tileY < 16; tileY += 8) {
        for (int tileX = 0; tileX < 16; tileX += 8) {
            std::array<double, 3> sum{};
            for (int y = tileY; y < tileY + 8; ++y) {
                for (int x = tileX; x < tileX + 8; ++x) {
                    const uint8_t* p = pixelAt(out, 16, x, y);
                    for (int c = 0; c < 3; ++c) {
                        double level = p[c] * 31.0 / 255.0;
                        // k / 31 stored in a byte is off by at most half a code, 0.06 of a level.
                        ASSERT_NEAR(level, std::round(level), 0.07) << "not one of the 32 levels";
                        sum[c] += p[c];
                    }
                    ASSERT_EQ(p[3], colour[3]);
                }
            }
            for (int c = 0; c < 3; ++c) EXPECT_NEAR(sum[c] / 64, colour[c], 1.5) << "channel " << c;
        }
    }
    // Some texels round up and some down: it is dithered, not just quantised.
    EXPECT_GT(maximumDifference(out, constantImage(16, 16, {out[0], out[1], out[2], out[3]})), 0);
}

TEST_F(FLKImageFilterTest, TransitionsAreTheirClipsAtTheEndsAndChangeSmoothlyBetween) {
    const int side = 64;
    auto from = std::make_shared<FLKFixedTextureProvider>(side, side, patternImage(side, side, 0));
    auto to = std::make_shared<FLKFixedTextureProvider>(side, side, patternImage(side, side, 1));
    const std::vector<uint8_t> fromPixels = patternImage(side, side, 0);
    const std::vector<uint8_t> toPixels = patternImage(side, side, 1);

    for (const std::string& name : FLKTransition::transitionFunctionNames()) {
        SCOPED_TRACE(name);
        auto transition = FLKTransition::transitionWithFunctionName(name);
        ASSERT_TRUE(transition);
        transition->setProvider(from);
        transition->setToProvider(to);

        transition->setProgress(0);
        EXPECT_EQ(outputOf(*transition), fromPixels);
        transition->setProgress(1);
        EXPECT_EQ(outputOf(*transition), toPixels);

        std::vector<uint8_t> previous = fromPixels;
        int largestStep = 0;
        bool changedInBetween = false;
        for (int step = 1; step <= 500; ++step) {
            transition->setProgress(step / 500.0f);
            std::vector<uint8_t> current = outputOf(*transition);
            ASSERT_EQ(current.size(), previous.size());
            largestStep = std::max(largestStep, maximumDifference(previous, current));
            if (step == 250) changedInBetween = current != fromPixels && current != toPixels;
            previous = std::move(current);
        }
        EXPECT_LE(largestStep, 8) << "a progress step of 0.002 jumps";
        EXPECT_TRUE(changedInBetween);
    }
}

TEST_F(FLKImageFilterTest, LastPartialBandIsNeverWrittenAndCleanFiltersDoNotRerun) {
    auto transition = FLKTransition::transitionWithFunctionName("fade");
    ASSERT_TRUE(transition);
    auto from = std::make_shared<FLKFixedTextureProvider>(100, 60, constantImage(100, 60, {200, 10, 20, 255}));
    auto to = std::make_shared<FLKFixedTextureProvider>(100, 60, constantImage(100, 60, {5, 90, 250, 255}));
    transition->setProvider(from);
    transition->setToProvider(to);

    auto output = transition->texture();
    ASSERT_TRUE(output);
    ASSERT_EQ(output->width(), 100);
    ASSERT_EQ(output->height(), 60);
    auto expectBands = [&](std::array<uint8_t, 4> inside, std::array<uint8_t, 4> band) {
        std::vector<uint8_t> pixels = output->readPixels();
        ASSERT_EQ(pixels.size(), 100u * 60 * 4);
        for (int y = 0; y < 60; ++y) {
            for (int x = 0; x < 100; ++x) {
                // 12 x 7 groups of 8 x 8 cover 96 x 56.
                const auto& expected = (x < 96 && y < 56) ? inside : band;
                const uint8_t* p = pixelAt(pixels, 100, x, y);
                ASSERT_TRUE(std::equal(expected.begin(), expected.end(), p)) << x << "," << y;
            }
        }
    };
    expectBands({200, 10, 20, 255}, {0, 0, 0, 0});

    const uint8_t marker[4] = {7, 7, 7, 7};
    glClearTexImage(output->name(), 0, GL_RGBA, GL_UNSIGNED_BYTE, marker);
    EXPECT_FALSE(transition->isDirty());
    EXPECT_EQ(transition->texture(), output);  // clean: no pass, same texture
    expectBands({7, 7, 7, 7}, {7, 7, 7, 7});

    transition->setProgress(1);
    EXPECT_TRUE(transition->isDirty());
    EXPECT_EQ(transition->texture(), output);  // same size: the texture is reused
    expectBands({5, 90, 250, 255}, {7, 7, 7, 7});
}

TEST_F(FLKImageFilterTest, MissingSourceLeavesTheOutputAndTheFilterDirty) {
    auto transition = FLKTransition::transitionWithFunctionName("crosshatch");
    ASSERT_TRUE(transition);
    auto from = std::make_shared<FLKFixedTextureProvider>(16, 16, constantImage(16, 16, {1, 2, 3, 255}));
    transition->setProvider(from);
    EXPECT_EQ(transition->texture(), nullptr);  // no incoming clip yet
    EXPECT_TRUE(transition->isDirty());
    {
        auto to = std::make_shared<FLKFixedTextureProvider>(16, 16, constantImage(16, 16, {9, 8, 7, 255}));
        transition->setToProvider(to);
        ASSERT_TRUE(transition->texture());
    }
    // The incoming clip is held weakly: once gone, the last output stays.
    transition->setProgress(1);
    auto output = transition->texture();
    ASSERT_TRUE(output);
    EXPECT_EQ(output->readPixels(), constantImage(16, 16, {1, 2, 3, 255}));
    EXPECT_TRUE(transition->isDirty());
}

TEST_F(FLKImageFilterTest, UnknownKernelGivesNoFilterAndSaysWhich) {
    std::vector<std::string> lines;
    flk::setLogSink([&](const std::string& line) { lines.push_back(line); });
    auto filter = FLKImageFilter::filterWithFunctionName("noSuchKernel", context);
    auto transition = FLKTransition::transitionWithFunctionName("fragment_textured");
    flk::setLogSink({});
    EXPECT_EQ(filter, nullptr);
    EXPECT_EQ(transition, nullptr);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find("Error occurred when building compute pipeline for function noSuchKernel"),
              std::string::npos)
        << lines[0];
}

TEST_F(FLKImageFilterTest, FiltersSaveOnlyTheirClassAndKernel) {
    EXPECT_EQ(FLKTransition::transitionFunctionNames(), (std::vector<std::string>{"crossZoom", "crosshatch", "fade"}));
    EXPECT_EQ(FLKTransition::titleForFunctionName("crossZoom"), "CrossZoom");

    auto transition = FLKTransition::transitionWithFunctionName("crosshatch");
    ASSERT_TRUE(transition);
    transition->setProgress(0.4f);
    FLKJSON saved = transition->serialized();
    EXPECT_EQ(saved, (FLKJSON{{"className", "FLKTransition"}, {"functionName", "crosshatch"}}));

    auto loaded = flk::objectWithDictionary<FLKTransition>(FLKJSON::parse(saved.dump()));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->functionName(), "crosshatch");
    EXPECT_EQ(loaded->progress(), 0.0f);
    // Through the base class, as a transition clip reads it.
    auto viaBase = FLKImageFilter::newWithDictionary({{"className", "FLKTransition"}, {"functionName", "crossZoom"}});
    ASSERT_TRUE(std::dynamic_pointer_cast<FLKTransition>(viaBase));
    EXPECT_EQ(viaBase->functionName(), "crossZoom");

    auto blur = flk::objectWithDictionary<FLKImageFilter>(FLKGaussianBlur2DFilter::filterWithRadius(4)->serialized());
    ASSERT_TRUE(std::dynamic_pointer_cast<FLKGaussianBlur2DFilter>(blur));
    EXPECT_EQ(blur->className(), "FLKGaussianBlur2DFilter");
    EXPECT_EQ(FLKImageFilter::newWithDictionary({{"className", "FLKTransition"}}), nullptr);
}

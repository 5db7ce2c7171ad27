#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "core/gpu/FLKBiplanarTexture.h"
#include "core/gpu/FLKGPUBuffer.h"
#include "core/gpu/FLKRenderPipelineFactory.h"
#include "core/gpu/FLKTextureLoader.h"
#include "core/platform/FLKLog.h"
#include "core/gpu/FLKGPUTestSupport.h"

namespace {
constexpr int kSize = 8;

// The camera's orthographic matrix for a frame (0, 0, w, h), y pointing down.
std::array<float, 16> cameraMatrix(float w, float h) {
    return {2 / w, 0, 0, 0, 0, -2 / h, 0, 0, 0, 0, 1, 0, -1, 1, 0, 1};
}

// A quad over scene rectangle (x, y, w, h) in the 32-byte textured record.
std::vector<float> texturedQuad(float x, float y, float w, float h) {
    return {x, y,     0, 1, 0, 0, 0, 0,  x + w, y,     0, 1, 1, 0, 0, 0,
            x, y + h, 0, 1, 0, 1, 0, 0,  x + w, y + h, 0, 1, 1, 1, 0, 0};
}

// The gradient's 48-byte coloured record, one colour for all four corners.
std::vector<float> coloredQuad(float x, float y, float w, float h, std::array<float, 4> c) {
    std::vector<float> v;
    const float corners[4][4] = {{x, y, 0, 0}, {x + w, y, 1, 0}, {x, y + h, 0, 1}, {x + w, y + h, 1, 1}};
    for (const auto& k : corners) {
        v.insert(v.end(), {k[0], k[1], 0, 1, c[0], c[1], c[2], c[3], k[2], k[3], 0, 0});
    }
    return v;
}

class FLKRenderPipelineTest : public FLKGLTest {
protected:
    void SetUp() override {
        FLKGLTest::SetUp();
        factory = std::make_unique<FLKRenderPipelineFactory>(context);
        target = FLKGPUTexture::renderTarget(kSize, kSize, FLKPixelFormat::RGBA8);
        ASSERT_TRUE(target);
        glCreateFramebuffers(1, &framebuffer);
        glNamedFramebufferTexture(framebuffer, GL_COLOR_ATTACHMENT0, target->name(), 0);
        ASSERT_EQ(glCheckNamedFramebufferStatus(framebuffer, GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glViewport(0, 0, kSize, kSize);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        auto matrix = cameraMatrix(kSize, kSize);
        camera = std::make_unique<FLKGPUBuffer>(matrix.data(), sizeof matrix);
        const FLKYCbCrColorimetry bt709Limited;
        colorimetry = std::make_unique<FLKGPUBuffer>(&bt709Limited, sizeof bt709Limited);
    }
    void TearDown() override {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        factory.reset();
        FLKGLTest::TearDown();
    }

    void draw(const char* pipelineName, const std::vector<float>& vertices,
              std::initializer_list<std::pair<FLKGPUTexture*, unsigned>> textures = {}) {
        FLKRenderPipeline* pipeline = factory->pipelineStateWithName(pipelineName);
        ASSERT_TRUE(pipeline) << pipelineName;
        FLKGPUBuffer vertexBuffer(vertices.data(), vertices.size() * sizeof(float));
        const uint16_t indices[6] = {0, 1, 2, 2, 1, 3};
        FLKGPUBuffer indexBuffer(indices, sizeof indices);
        pipeline->apply();
        for (auto [texture, unit] : textures) {
            FLKRenderPipeline::setFragmentTexture(*texture, unit);
            FLKRenderPipeline::setFragmentSampler(context->samplerState(), unit);
        }
        pipeline->setVertexBuffer(vertexBuffer);
        FLKRenderPipeline::setCameraUniformBuffer(*camera);
        FLKRenderPipeline::setColorimetryUniformBuffer(*colorimetry);
        pipeline->drawIndexed(indexBuffer);
        ASSERT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    }

    // Premultiplied RGBA of the target at (x, y), y counted from the top, in 0...1.
    std::array<double, 4> pixel(int x, int y) {
        std::vector<uint8_t> bytes = target->readPixels();
        std::array<double, 4> p;
        for (int c = 0; c < 4; ++c) p[c] = bytes[(y * kSize + x) * 4 + c] / 255.0;
        return p;
    }

    std::unique_ptr<FLKRenderPipelineFactory> factory;
    std::shared_ptr<FLKGPUTexture> target;
    std::unique_ptr<FLKGPUBuffer> camera;
    std::unique_ptr<FLKGPUBuffer> colorimetry;
    GLuint framebuffer = 0;
};

void expectNear(const std::array<double, 4>& actual, const std::array<double, 4>& expected, double tolerance = 1.5 / 255) {
    for (int c = 0; c < 4; ++c) EXPECT_NEAR(actual[c], expected[c], tolerance) << "channel " << c;
}

std::array<double, 4> over(const std::array<double, 4>& source, const std::array<double, 4>& destination) {
    std::array<double, 4> out;
    for (int c = 0; c < 4; ++c) out[c] = source[c] + destination[c] * (1 - source[3]);
    return out;
}
}  // namespace

TEST_F(FLKRenderPipelineTest, AllFivePipelinesAreBuiltWithTheirBlendRecipes) {
    struct Expected {
        const char* name;
        const char* fragment;
        bool blending;
    };
    const Expected table[] = {
        {FLKPipelineNameVertexFragmentTexturedBGRA, "fragment_textured", true},
        {FLKPipelineNameVertexFragmentTexturedMaskedBGRA, "fragment_textured_masked", true},
        {FLKPipelineNameVertexFragmentTexturedYUV, "fragment_textured_yuv", false},
        {FLKPipelineNameVertexFragmentTexturedMaskedYUV, "fragment_textured_yuv_masked", true},
        {FLKPipelineNameVertexFragmentColored, "fragment_colored", true},
    };
    EXPECT_EQ(factory->pipelinesDictionary().size(), 5u);
    for (const auto& row : table) {
        FLKRenderPipeline* pipeline = factory->pipelineStateWithName(row.name);
        ASSERT_TRUE(pipeline) << row.name;
        EXPECT_EQ(pipeline->fragmentFunctionName(), row.fragment);
        EXPECT_EQ(pipeline->isBlendingEnabled(), row.blending) << row.name;
        GLint linked = 0;
        glGetProgramiv(pipeline->program(), GL_LINK_STATUS, &linked);
        EXPECT_EQ(linked, GL_TRUE);
    }
    EXPECT_EQ(factory->pipelineStateWithName(FLKPipelineNameVertexFragmentColored)->vertexStride(), 48u);
    EXPECT_EQ(factory->pipelineStateWithName(FLKPipelineNameVertexFragmentTexturedBGRA)->vertexStride(), 32u);
    EXPECT_EQ(factory->pipelineStateWithName("FLKPipelineNameUnknown"), nullptr);
}

TEST_F(FLKRenderPipelineTest, MissingShaderFunctionIsAnError) {
    FLKError error;
    EXPECT_EQ(factory->bgraPipelineWithVertexFunctionNamed("vertex_textured", "fragment_missing", &error), nullptr);
    EXPECT_NE(error.localizedDescription.find("fragment_missing"), std::string::npos);
    FLKError wrongStage;
    EXPECT_EQ(factory->yuvPipelineWithVertexFunctionNamed("fragment_textured", "fragment_textured", &wrongStage),
              nullptr);
    EXPECT_FALSE(wrongStage.localizedDescription.empty());
}

TEST_F(FLKRenderPipelineTest, HalfTransparentTextureIsPremultipliedOverTheBackground) {
    const std::array<float, 4> background = {0.2f, 0.4f, 0.6f, 1.0f};
    draw(FLKPipelineNameVertexFragmentColored, coloredQuad(0, 0, kSize, kSize, background));
    auto overlay = FLKTextureLoader::textureWithColor({1.0, 0.5, 0.0, 0.5}, {2, 2});
    draw(FLKPipelineNameVertexFragmentTexturedBGRA, texturedQuad(0, 0, kSize / 2, kSize / 2),
         {{overlay.get(), kFLKColorTextureUnit}});

    std::array<double, 4> destination = {51 / 255.0, 102 / 255.0, 153 / 255.0, 1};
    std::array<double, 4> source = {128 / 255.0, 64 / 255.0, 0, 128 / 255.0};
    expectNear(pixel(1, 1), over(source, destination));  // top left: covered
    expectNear(pixel(6, 6), destination);               // bottom right: background only
    expectNear(pixel(6, 1), destination);               // scene y points down: the top right stays clear
}

TEST_F(FLKRenderPipelineTest, TranslucentVertexColoursArePremultipliedBeforeBlending) {
    draw(FLKPipelineNameVertexFragmentColored, coloredQuad(0, 0, kSize, kSize, {0, 0, 1, 1}));
    draw(FLKPipelineNameVertexFragmentColored, coloredQuad(0, 0, kSize, kSize, {1, 0, 0, 0.25f}));
    expectNear(pixel(3, 3), over({0.25, 0, 0, 0.25}, {0, 0, 1, 1}));
}

TEST_F(FLKRenderPipelineTest, MaskScalesTheTextureByItsAlpha) {
    draw(FLKPipelineNameVertexFragmentColored, coloredQuad(0, 0, kSize, kSize, {0, 1, 0, 1}));
    auto picture = FLKTextureLoader::textureWithColor({1, 1, 1, 1}, {2, 2});
    auto mask = FLKTextureLoader::textureWithColor({1, 1, 1, 0.25}, {2, 2});
    draw(FLKPipelineNameVertexFragmentTexturedMaskedBGRA, texturedQuad(0, 0, kSize, kSize),
         {{picture.get(), kFLKColorTextureUnit}, {mask.get(), kFLKMaskTextureUnit}});
    double a = 64 / 255.0;
    expectNear(pixel(4, 4), over({a, a, a, a}, {0, 1, 0, 1}));
}

TEST_F(FLKRenderPipelineTest, YUVPipelinesConvertBT709AndOnlyTheMaskedOneBlends) {
    const int side = 4;
    const uint8_t y = 150, cb = 100, cr = 180;
    auto planes = std::make_shared<std::vector<uint8_t>>(side * side + side * side / 2);
    std::fill(planes->begin(), planes->begin() + side * side, y);
    for (size_t i = side * side; i < planes->size(); i += 2) (*planes)[i] = cb, (*planes)[i + 1] = cr;
    FLKBiplanarTexture frame(FLKNV12Frame{side, side, planes->data(), side, planes->data() + side * side, side, planes},
                             0);
    frame.refreshTexture();
    ASSERT_TRUE(frame.texture() && frame.texture1());

    double luma = (y - 16) / 219.0, u = (cb - 128) / 224.0, v = (cr - 128) / 224.0;
    std::array<double, 4> rgb = {std::clamp(luma + 1.5748 * v, 0.0, 1.0),
                                 std::clamp(luma - 0.187324 * u - 0.468124 * v, 0.0, 1.0),
                                 std::clamp(luma + 1.8556 * u, 0.0, 1.0), 1};

    draw(FLKPipelineNameVertexFragmentTexturedYUV, texturedQuad(0, 0, kSize, kSize),
         {{frame.texture().get(), kFLKColorTextureUnit}, {frame.texture1().get(), kFLKChromaTextureUnit}});
    expectNear(pixel(2, 2), rgb, 2.5 / 255);

    glClear(GL_COLOR_BUFFER_BIT);
    draw(FLKPipelineNameVertexFragmentColored, coloredQuad(0, 0, kSize, kSize, {0, 0, 0, 1}));
    auto mask = FLKTextureLoader::textureWithColor({1, 1, 1, 0.5}, {2, 2});
    draw(FLKPipelineNameVertexFragmentTexturedMaskedYUV, texturedQuad(0, 0, kSize, kSize),
         {{frame.texture().get(), kFLKColorTextureUnit},
          {mask.get(), kFLKMaskTextureUnit},
          {frame.texture1().get(), kFLKChromaTextureUnit}});
    double m = 128 / 255.0;
    expectNear(pixel(5, 5), over({rgb[0] * m, rgb[1] * m, rgb[2] * m, m}, {0, 0, 0, 1}), 2.5 / 255);
}

TEST_F(FLKRenderPipelineTest, RenderTargetReadsBackTopRowFirst) {
    draw(FLKPipelineNameVertexFragmentColored, coloredQuad(0, 0, kSize, 1, {1, 1, 1, 1}));
    FLKImage image = flk::imageWithTexture(*target);
    EXPECT_EQ(image.pixel(0, 0)[0], 255);
    EXPECT_EQ(image.pixel(0, kSize - 1)[3], 0);
}

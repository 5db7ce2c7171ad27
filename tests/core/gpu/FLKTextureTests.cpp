#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/gpu/FLKBiplanarTexture.h"
#include "core/gpu/FLKTextureBuffer.h"
#include "core/gpu/FLKTextureLoader.h"
#include "core/media/FLKImageIO.h"
#include "core/gpu/FLKGPUTestSupport.h"

using FLKTextureTest = FLKGLTest;

namespace {
std::shared_ptr<FLKTexture> frameAt(double time) {
    return std::make_shared<FLKTexture>(std::make_shared<FLKPixelBuffer>(2, 2), FLKPixelFormat::BGRA8, time);
}

// Opaque BGRA bytes that differ everywhere else.
uint8_t byteAt(int x, int y) { return x % 4 == 3 ? 255 : static_cast<uint8_t>(y * 12 + x + 1); }

GLint levelParameter(GLuint texture, GLenum name) {
    GLint value = 0;
    glGetTextureLevelParameteriv(texture, 0, name, &value);
    return value;
}
}  // namespace

TEST(FLKTextureMath, MakeEvenRoundsOddSizesUp) {
    EXPECT_EQ(FLKTexture::makeEven(1079), 1080);
    EXPECT_EQ(FLKTexture::makeEven(1080), 1080);
    EXPECT_EQ(FLKTexture::makeEven(1), 2);
}

TEST_F(FLKTextureTest, BGRAFrameUploadsAtEvenSizeAndReadsBackItsBytes) {
    auto buffer = std::make_shared<FLKPixelBuffer>(3, 3);
    buffer->stride = 16;  // padded rows
    buffer->bgra.assign(16 * 3, 0xEE);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 12; ++x) buffer->bgra[y * 16 + x] = byteAt(x, y);
    }
    FLKTexture frame(buffer, FLKPixelFormat::BGRA8, 1.25);
    EXPECT_EQ(frame.texture(), nullptr);  // nothing happens before refresh
    frame.refreshTexture();
    auto texture = frame.texture();
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->width(), 4);
    EXPECT_EQ(texture->height(), 4);
    // Sized RGBA storage: with BGRA storage llvmpipe takes a fast path that blends wrongly.
    EXPECT_EQ(levelParameter(texture->name(), GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA8);

    std::vector<uint8_t> pixels = texture->readPixels();
    ASSERT_EQ(pixels.size(), 4u * 4 * 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 16; ++x) {
            uint8_t expected = (y < 3 && x < 12) ? byteAt(x, y) : 0;
            ASSERT_EQ(pixels[y * 16 + x], expected) << "row " << y << " byte " << x;
        }
    }
    // In straight RGBA the blue and red bytes swap places.
    FLKImage image = flk::imageWithTexture(*texture);
    EXPECT_EQ(image.pixel(0, 0)[0], 3);
    EXPECT_EQ(image.pixel(0, 0)[2], 1);
}

TEST_F(FLKTextureTest, ShortPixelBufferLeavesTheTextureUnset) {
    auto buffer = std::make_shared<FLKPixelBuffer>(8, 8);
    buffer->bgra.resize(10);
    FLKTexture frame(buffer, FLKPixelFormat::BGRA8, 0);
    frame.refreshTexture();
    EXPECT_EQ(frame.texture(), nullptr);
}

TEST_F(FLKTextureTest, NV12FrameBecomesLumaAndHalfSizeChromaTextures) {
    const int width = 10, height = 10, lumaStride = 12, chromaStride = 12;
    auto planes = std::make_shared<std::vector<uint8_t>>(lumaStride * height + chromaStride * 5, 0);
    uint8_t* luma = planes->data();
    uint8_t* chroma = luma + lumaStride * height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) luma[y * lumaStride + x] = static_cast<uint8_t>(y * width + x);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) {
            chroma[y * chromaStride + 2 * x] = static_cast<uint8_t>(100 + y * 5 + x);
            chroma[y * chromaStride + 2 * x + 1] = static_cast<uint8_t>(200 - y * 5 - x);
        }
    FLKBiplanarTexture frame(FLKNV12Frame{width, height, luma, lumaStride, chroma, chromaStride, planes}, 2.0);
    frame.refreshTexture();
    auto lumaTexture = frame.texture();
    auto chromaTexture = frame.texture1();
    ASSERT_TRUE(lumaTexture);
    ASSERT_TRUE(chromaTexture);
    EXPECT_EQ(lumaTexture->width(), 10);
    EXPECT_EQ(lumaTexture->height(), 10);
    EXPECT_EQ(levelParameter(lumaTexture->name(), GL_TEXTURE_INTERNAL_FORMAT), GL_R8);
    EXPECT_EQ(chromaTexture->width(), 6);
    EXPECT_EQ(chromaTexture->height(), 6);
    EXPECT_EQ(levelParameter(chromaTexture->name(), GL_TEXTURE_INTERNAL_FORMAT), GL_RG8);

    std::vector<uint8_t> lumaBytes = lumaTexture->readPixels();
    for (int i = 0; i < width * height; ++i) ASSERT_EQ(lumaBytes[i], i);
    std::vector<uint8_t> chromaBytes = chromaTexture->readPixels();
    ASSERT_EQ(chromaBytes.size(), 6u * 6 * 2);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x) {
            bool inside = x < 5 && y < 5;
            EXPECT_EQ(chromaBytes[(y * 6 + x) * 2], inside ? 100 + y * 5 + x : 0);
            EXPECT_EQ(chromaBytes[(y * 6 + x) * 2 + 1], inside ? 200 - y * 5 - x : 0);
        }
}

TEST(FLKTextureBufferTest, RingKeepsTheLastFramesInPlace) {
    FLKTextureBuffer ring(3);
    EXPECT_EQ(ring.currentIndex(), -1);
    EXPECT_EQ(ring.currentTexture(), nullptr);
    EXPECT_EQ(ring.timeRange(), (std::pair<double, double>{0, 0}));

    std::vector<std::shared_ptr<FLKTexture>> frames;
    for (int i = 1; i <= 5; ++i) frames.push_back(frameAt(i * 0.25));
    for (int i = 0; i < 2; ++i) ring.addTexture(frames[i]);
    EXPECT_EQ(ring.lastTextureTime(), 0.5);  // while filling: the newest
    for (int i = 2; i < 5; ++i) ring.addTexture(frames[i]);

    ASSERT_EQ(ring.ring().size(), 3u);
    EXPECT_EQ(ring.ring()[0], frames[3]);
    EXPECT_EQ(ring.ring()[1], frames[4]);
    EXPECT_EQ(ring.ring()[2], frames[2]);
    EXPECT_EQ(ring.currentIndex(), 1);
    EXPECT_EQ(ring.currentTexture(), frames[4]);
    EXPECT_EQ(ring.lastTextureTime(), 0.75);  // after wrap-around: the end of the array
    EXPECT_EQ(ring.timeRange(), (std::pair<double, double>{1.0, 0.75}));

    ring.clear();
    EXPECT_EQ(ring.currentIndex(), -1);
    EXPECT_TRUE(ring.ring().empty());
    ring.addTexture(frames[0]);
    EXPECT_EQ(ring.currentIndex(), 0);
}

TEST(FLKTextureBufferTest, LookupByTimeTakesTheFirstWithinTheMargin) {
    FLKTextureBuffer ring(5);
    ring.addTexture(frameAt(1.0));
    ring.addTexture(frameAt(1.5));
    ring.addTexture(frameAt(2.0));
    EXPECT_EQ(ring.textureAtTime(1.5, 0)->sampleTimeStamp(), 1.5);
    EXPECT_EQ(ring.textureAtTime(1.5000001, 0), nullptr);
    EXPECT_EQ(ring.textureAtTime(1.7, 0.6)->sampleTimeStamp(), 1.5);
    EXPECT_EQ(ring.textureAtTime(1.7, 0.25)->sampleTimeStamp(), 1.5);
    EXPECT_EQ(ring.textureAtTime(1.95, 0.1)->sampleTimeStamp(), 2.0);
    EXPECT_EQ(ring.textureAtTime(5.0, 1.0), nullptr);
}

// A still screen sends no frames for seconds: the latest frame before a time
// answers however far back it lies, and only once a later one proves that
// none still to come answers instead.
TEST(FLKTextureBufferTest, FrameShownAtATimeIsTheLatestBeforeIt) {
    FLKTextureBuffer ring(0xFFFFFFFFu);
    for (double time : {1.0, 1.5, 3.5}) ring.addTexture(frameAt(time));
    auto shownAt = [&](double time) {
        auto shown = ring.textureShownAtTime(time, 0.0001);
        return std::pair{shown.texture->sampleTimeStamp(), shown.isFollowed};
    };
    EXPECT_EQ(shownAt(1.2), (std::pair{1.0, true}));
    EXPECT_EQ(shownAt(3.0), (std::pair{1.5, true})) << "two seconds after its frame";
    EXPECT_EQ(shownAt(1.5), (std::pair{1.0, true})) << "at its exact start a frame gives way to the one before";
    EXPECT_EQ(shownAt(1.50001), (std::pair{1.0, true})) << "within the tolerance";
    EXPECT_EQ(shownAt(1.5002), (std::pair{1.5, true}));
    EXPECT_EQ(shownAt(0.5), (std::pair{1.0, true})) << "before every frame, the first";
    EXPECT_EQ(shownAt(9.0), (std::pair{3.5, false})) << "a later frame may still come";
    EXPECT_EQ(FLKTextureBuffer().textureShownAtTime(1.0, 0.0001).texture, nullptr);

    // A ring that wrapped around keeps its frames out of array order.
    FLKTextureBuffer wrapped(3);
    for (int i = 1; i <= 5; ++i) wrapped.addTexture(frameAt(i * 0.25));
    ASSERT_EQ(wrapped.ring().front()->sampleTimeStamp(), 1.0);
    EXPECT_EQ(wrapped.textureShownAtTime(1.1, 0.0001).texture->sampleTimeStamp(), 1.0);
    EXPECT_EQ(wrapped.textureShownAtTime(0.8, 0.0001).texture->sampleTimeStamp(), 0.75);
    EXPECT_EQ(wrapped.textureShownAtTime(0.1, 0.0001).texture->sampleTimeStamp(), 0.75);
    EXPECT_FALSE(wrapped.textureShownAtTime(1.3, 0.0001).isFollowed);
}

TEST_F(FLKTextureTest, ColorTextureIsPremultipliedRGBA) {
    EXPECT_EQ(&FLKTextureLoader::textureLoader(), &FLKTextureLoader::textureLoader());
    auto texture = FLKTextureLoader::textureWithColor({1.0, 0.5, 0.0, 0.5}, {3, 2});
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->width(), 3);
    EXPECT_EQ(texture->height(), 2);
    EXPECT_EQ(texture->pixelFormat(), FLKPixelFormat::RGBA8);
    std::vector<uint8_t> pixels = texture->readPixels();
    ASSERT_EQ(pixels.size(), 24u);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        EXPECT_EQ(pixels[i], 128);
        EXPECT_EQ(pixels[i + 1], 64);
        EXPECT_EQ(pixels[i + 2], 0);
        EXPECT_EQ(pixels[i + 3], 128);
    }
    FLKImage straight = flk::imageWithTexture(*texture);
    EXPECT_EQ(straight.pixel(2, 1)[0], 255);
    EXPECT_EQ(straight.pixel(2, 1)[1], 128);
    EXPECT_EQ(straight.pixel(2, 1)[3], 128);
}

TEST_F(FLKTextureTest, ImageFileLoadsAsATextureOfItsSize) {
    FLKImage image(5, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) {
            uint8_t* p = image.pixel(x, y);
            p[0] = static_cast<uint8_t>(x * 50), p[1] = static_cast<uint8_t>(y * 100), p[2] = 30, p[3] = 255;
        }
    image.pixel(4, 2)[3] = 0;  // transparent corner: premultiplied to zero
    auto url = std::filesystem::path(std::getenv("FLICKWELL_HOME")) / "loader.png";
    ASSERT_TRUE(flk::writePNG(image, url));

    auto texture = FLKTextureLoader::texture2DWithImageURL(url);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->width(), 5);
    EXPECT_EQ(texture->height(), 3);
    std::vector<uint8_t> pixels = texture->readPixels();
    image.pixel(4, 2)[0] = image.pixel(4, 2)[1] = image.pixel(4, 2)[2] = 0;
    EXPECT_EQ(pixels, image.rgba);

    FLKError error;
    EXPECT_EQ(FLKTextureLoader::texture2DWithImageURL(url.parent_path() / "nothing.png", false, &error), nullptr);
    EXPECT_NE(error.localizedDescription.find("nothing.png"), std::string::npos);
}

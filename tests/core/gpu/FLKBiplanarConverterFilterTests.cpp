#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

extern "C" {
#include <libswscale/swscale.h>
}

#include "core/gpu/FLKBiplanarConverterFilter.h"
#include "core/gpu/FLKGPUTestSupport.h"

using FLKBiplanarConverterFilterTest = FLKGLTest;

namespace {
constexpr int kSide = 64;
constexpr int kBlock = 8;  // whole chroma blocks of one colour, so subsampling loses nothing

const std::vector<std::array<uint8_t, 3>> kColours = {
    {0, 0, 0},       {255, 255, 255}, {128, 128, 128}, {255, 0, 0},   {0, 255, 0},    {0, 0, 255},
    {255, 255, 0},   {0, 255, 255},   {255, 0, 255},   {200, 120, 40}, {30, 60, 190},  {17, 240, 99},
    {250, 200, 180}, {64, 32, 16},    {90, 180, 130},  {235, 16, 128},
};

std::array<uint8_t, 3> colourOfBlock(int x, int y) {
    return kColours[static_cast<size_t>((y / kBlock) * (kSide / kBlock) + x / kBlock) % kColours.size()];
}

// NV12 made from RGB by FFmpeg's scaler with the given matrix and range.
FLKNV12Frame nv12FromKnownColours(FLKColorMatrix matrix, FLKColorRange range) {
    std::vector<uint8_t> rgb(kSide * kSide * 3);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            auto colour = colourOfBlock(x, y);
            std::copy(colour.begin(), colour.end(), &rgb[(y * kSide + x) * 3]);
        }
    auto planes = std::make_shared<std::vector<uint8_t>>(kSide * kSide + kSide * kSide / 2);
    SwsContext* scaler = sws_getContext(kSide, kSide, AV_PIX_FMT_RGB24, kSide, kSide, AV_PIX_FMT_NV12,
                                        SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr, nullptr, nullptr);
    EXPECT_TRUE(scaler);
    if (!scaler) return {};
    const int* coefficients = sws_getCoefficients(matrix == FLKColorMatrix::BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
    int full = range == FLKColorRange::Full ? 1 : 0;
    EXPECT_GE(sws_setColorspaceDetails(scaler, coefficients, 1, coefficients, full, 0, 1 << 16, 1 << 16), 0);
    const uint8_t* source[4] = {rgb.data(), nullptr, nullptr, nullptr};
    const int sourceStride[4] = {kSide * 3, 0, 0, 0};
    uint8_t* destination[4] = {planes->data(), planes->data() + kSide * kSide, nullptr, nullptr};
    const int destinationStride[4] = {kSide, kSide, 0, 0};
    sws_scale(scaler, source, sourceStride, 0, kSide, destination, destinationStride);
    sws_freeContext(scaler);

    FLKNV12Frame frame;
    frame.width = frame.height = kSide;
    frame.luma = planes->data();
    frame.lumaStride = kSide;
    frame.chroma = planes->data() + kSide * kSide;
    frame.chromaStride = kSide;
    frame.owner = planes;
    return frame;
}

// The largest channel difference from the known colours.
int largestError(FLKBiplanarConverterFilter& converter, FLKColorMatrix matrix, FLKColorRange range) {
    auto frame = std::make_shared<FLKBiplanarTexture>(nv12FromKnownColours(matrix, range), 0);
    frame->refreshTexture();
    converter.setProvider(frame);
    auto output = converter.texture();
    if (!output) return 256;
    std::vector<uint8_t> rgba = output->readPixels();
    if (rgba.size() != kSide * kSide * 4) return 256;
    int largest = 0;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            auto colour = colourOfBlock(x, y);
            const uint8_t* p = &rgba[(y * kSide + x) * 4];
            for (int c = 0; c < 3; ++c) largest = std::max(largest, std::abs(int(p[c]) - int(colour[c])));
            if (p[3] != 255) return 256;
        }
    return largest;
}
}  // namespace

TEST_F(FLKBiplanarConverterFilterTest, KnownColoursComeBackWithinTwoCodesForEachMatrixAndRange) {
    auto converter = FLKBiplanarConverterFilter::filter();
    ASSERT_TRUE(converter);
    EXPECT_EQ(converter->colorMatrix(), FLKColorMatrix::BT709);
    EXPECT_EQ(converter->colorRange(), FLKColorRange::Limited);
    for (auto matrix : {FLKColorMatrix::BT709, FLKColorMatrix::BT601}) {
        for (auto range : {FLKColorRange::Limited, FLKColorRange::Full}) {
            SCOPED_TRACE(std::string(matrix == FLKColorMatrix::BT709 ? "BT.709" : "BT.601") +
                         (range == FLKColorRange::Full ? " full" : " limited"));
            converter->setColorimetry(matrix, range);
            EXPECT_LE(largestError(*converter, matrix, range), 2);
        }
    }
}

TEST_F(FLKBiplanarConverterFilterTest, TheFramesOwnColorimetryMatters) {
    auto converter = FLKBiplanarConverterFilter::filter();
    ASSERT_TRUE(converter);
    // BT.601 pictures read as BT.709, and full range read as limited, miss by far.
    converter->setColorimetry(FLKColorMatrix::BT709, FLKColorRange::Limited);
    EXPECT_GT(largestError(*converter, FLKColorMatrix::BT601, FLKColorRange::Limited), 10);
    EXPECT_GT(largestError(*converter, FLKColorMatrix::BT709, FLKColorRange::Full), 10);
    // A change of colorimetry alone makes the filter run again.
    converter->setColorRange(FLKColorRange::Full);
    EXPECT_TRUE(converter->isDirty());
    EXPECT_LE(largestError(*converter, FLKColorMatrix::BT709, FLKColorRange::Full), 2);
}

TEST_F(FLKBiplanarConverterFilterTest, NeedsABiplanarSource) {
    auto converter = FLKBiplanarConverterFilter::filter();
    ASSERT_TRUE(converter);
    auto frame = std::make_shared<FLKBiplanarTexture>(FLKNV12Frame{}, 0);  // nothing decoded
    converter->setProvider(frame);
    EXPECT_EQ(converter->texture(), nullptr);
    EXPECT_EQ(converter->biplanarTexture(), frame);
}

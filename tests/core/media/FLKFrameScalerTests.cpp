#include <gtest/gtest.h>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <vector>

#include "core/media/FLKFrameScaler.h"

namespace {

flk::media::Frame gradientSource(int width, int height) {
    flk::media::Frame frame(av_frame_alloc());
    frame->width = width;
    frame->height = height;
    frame->format = AV_PIX_FMT_YUV420P;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    for (int plane = 0; plane < 3; ++plane) {
        const int w = plane ? (width + 1) / 2 : width, h = plane ? (height + 1) / 2 : height;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                frame->data[plane][y * frame->linesize[plane] + x] = static_cast<uint8_t>((x * 7 + y * 3 + plane * 50) & 0xFF);
    }
    return frame;
}

// The visible bytes of every plane, row by row, without the padding.
std::vector<uint8_t> visibleBytes(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    std::vector<uint8_t> bytes;
    int linesizes[4] = {};
    av_image_fill_linesizes(linesizes, format, frame.width);
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        const int rows = plane ? AV_CEIL_RSHIFT(frame.height, descriptor->log2_chroma_h) : frame.height;
        for (int y = 0; y < rows; ++y) {
            const uint8_t* row = frame.data[plane] + y * frame.linesize[plane];
            bytes.insert(bytes.end(), row, row + linesizes[plane]);
        }
    }
    return bytes;
}

}  // namespace

// Frames kept by the hundred live in pages of their own: the same pictures as
// FFmpeg's own buffers, at sizes whose rows are not a multiple of anything.
TEST(FLKFrameScaler, FramesInTheirOwnPagesHoldTheSamePictures) {
    struct Case {
        int sourceWidth, sourceHeight, width, height;
        AVPixelFormat format;
    };
    for (const Case c : {Case{1080, 1920, 720, 720, AV_PIX_FMT_NV12}, Case{333, 201, 211, 97, AV_PIX_FMT_NV12},
                         Case{333, 201, 211, 97, AV_PIX_FMT_YUV420P}, Case{64, 48, 31, 17, AV_PIX_FMT_BGRA}}) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height) + " " + av_get_pix_fmt_name(c.format));
        auto source = gradientSource(c.sourceWidth, c.sourceHeight);
        FLKFrameScaler pooled(c.width, c.height, c.format, SWS_FAST_BILINEAR);
        FLKFrameScaler ownPages(c.width, c.height, c.format, SWS_FAST_BILINEAR);
        ownPages.setOutputsOwnPages(true);
        auto expected = pooled.scale(source.get());
        auto actual = ownPages.scale(source.get());
        ASSERT_TRUE(expected && actual);
        EXPECT_EQ(actual->width, c.width);
        EXPECT_EQ(actual->height, c.height);
        EXPECT_TRUE(av_frame_is_writable(actual.get()));
        EXPECT_EQ(visibleBytes(*actual), visibleBytes(*expected));
        // A reference keeps the pages after the frame it came from is gone.
        flk::media::Frame kept(av_frame_clone(actual.get()));
        actual.reset();
        EXPECT_EQ(visibleBytes(*kept), visibleBytes(*expected));
    }
}

#include "core/media/FLKVideoFrame.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

FLKVideoFrame::FLKVideoFrame(const AVFrame* frame, double presentationTime)
    : frame_(av_frame_clone(frame)), presentationTime_(presentationTime) {}

FLKVideoFrame::~FLKVideoFrame() { av_frame_free(&frame_); }

int FLKVideoFrame::width() const { return frame_ ? frame_->width : 0; }
int FLKVideoFrame::height() const { return frame_ ? frame_->height : 0; }
int FLKVideoFrame::pixelFormat() const { return frame_ ? frame_->format : AV_PIX_FMT_NONE; }

std::string FLKVideoFrame::pixelFormatName() const {
    const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(pixelFormat()));
    return name ? name : "none";
}

bool FLKVideoFrame::isNV12() const { return pixelFormat() == AV_PIX_FMT_NV12; }

const uint8_t* FLKVideoFrame::yPlane() const { return isNV12() ? frame_->data[0] : nullptr; }
int FLKVideoFrame::yStride() const { return isNV12() ? frame_->linesize[0] : 0; }
const uint8_t* FLKVideoFrame::uvPlane() const { return isNV12() ? frame_->data[1] : nullptr; }
int FLKVideoFrame::uvStride() const { return isNV12() ? frame_->linesize[1] : 0; }

FLKColorMatrix FLKVideoFrame::colorMatrix() const {
    if (!frame_) return FLKColorMatrix::BT709;
    switch (frame_->colorspace) {
    case AVCOL_SPC_BT709: return FLKColorMatrix::BT709;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_FCC: return FLKColorMatrix::BT601;
    default: return frame_->height >= 720 ? FLKColorMatrix::BT709 : FLKColorMatrix::BT601;
    }
}

FLKColorRange FLKVideoFrame::colorRange() const {
    return frame_ && frame_->color_range == AVCOL_RANGE_JPEG ? FLKColorRange::Full : FLKColorRange::Limited;
}

#include "core/media/FLKFrameScaler.h"

#include <array>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

// Decoders still tag full-range JPEG content with the deprecated "j" formats.
AVPixelFormat withoutJPEGAlias(AVPixelFormat format, bool* fullRange) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P: *fullRange = true; return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P: *fullRange = true; return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P: *fullRange = true; return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P: *fullRange = true; return AV_PIX_FMT_YUV440P;
    default: return format;
    }
}

AVColorSpace resolvedColorspace(const AVFrame* frame) {
    switch (frame->colorspace) {
    case AVCOL_SPC_BT709:
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M: return frame->colorspace;
    default: return frame->height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
}

bool isRGB(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    return descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_RGB);
}

}  // namespace

FLKFrameScaler::FLKFrameScaler(int outputWidth, int outputHeight, AVPixelFormat outputFormat, int flags)
    : outputWidth_(outputWidth), outputHeight_(outputHeight), outputFormat_(outputFormat), flags_(flags) {}

FLKFrameScaler::~FLKFrameScaler() { sws_freeContext(context_); }

void FLKFrameScaler::setOutputSize(int width, int height) {
    outputWidth_ = width;
    outputHeight_ = height;
}

flk::media::Frame FLKFrameScaler::scale(const AVFrame* source) {
    if (!source || source->width <= 0 || source->height <= 0 || outputWidth_ <= 0 || outputHeight_ <= 0)
        return nullptr;
    bool fullRange = source->color_range == AVCOL_RANGE_JPEG;
    AVPixelFormat sourceFormat = withoutJPEGAlias(static_cast<AVPixelFormat>(source->format), &fullRange);
    context_ = sws_getCachedContext(context_, source->width, source->height, sourceFormat, outputWidth_,
                                    outputHeight_, outputFormat_, flags_, nullptr, nullptr, nullptr);
    if (!context_) return nullptr;

    AVColorSpace colorspace = resolvedColorspace(source);
    const int* coefficients = sws_getCoefficients(colorspace == AVCOL_SPC_BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
    bool outputRGB = isRGB(outputFormat_);
    int outputFullRange = outputRGB ? 1 : fullRange;
    std::array<int, 6> details{source->width, source->height, sourceFormat, outputWidth_ * 65536 + outputHeight_,
                               colorspace, fullRange * 2 + outputFullRange};
    if (details != configuredDetails_) {
        // Setting the details rebuilds tables: only when something changed.
        sws_setColorspaceDetails(context_, coefficients, fullRange, coefficients, outputFullRange, 0, 1 << 16,
                                 1 << 16);
        configuredDetails_ = details;
    }

    flk::media::Frame output(av_frame_alloc());
    if (!output) return nullptr;
    output->width = outputWidth_;
    output->height = outputHeight_;
    output->format = outputFormat_;
    if (av_frame_get_buffer(output.get(), 0) < 0) return nullptr;
    if (sws_scale(context_, source->data, source->linesize, 0, source->height, output->data, output->linesize) <= 0)
        return nullptr;
    if (!outputRGB) {
        output->colorspace = colorspace;
        output->color_range = fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        output->color_primaries = source->color_primaries;
        output->color_trc = source->color_trc;
    }
    output->pts = source->pts;
    return output;
}

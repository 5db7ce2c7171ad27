#include "core/media/FLKFrameScaler.h"

#include <sys/mman.h>

#include <array>

extern "C" {
#include <libavutil/imgutils.h>
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

void unmapPages(void* size, uint8_t* data) { munmap(data, reinterpret_cast<size_t>(size)); }

// Rows as long as the picture, rounded up to 16 bytes for swscale's vector
// code, with a tail for the widest vector store past the last row; in an
// anonymous mapping of its own.
bool allocateOwnPages(AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    constexpr int kAlign = 16;
    constexpr size_t kTail = 64;
    if (av_image_fill_linesizes(frame.linesize, format, frame.width) < 0) return false;
    for (int& linesize : frame.linesize) linesize = FFALIGN(linesize, kAlign);
    std::array<ptrdiff_t, 4> linesizes{};
    for (size_t plane = 0; plane < linesizes.size(); ++plane) linesizes[plane] = frame.linesize[plane];
    std::array<size_t, 4> planeSizes{};
    if (av_image_fill_plane_sizes(planeSizes.data(), format, frame.height, linesizes.data()) < 0) return false;
    size_t size = kTail;
    for (size_t planeSize : planeSizes) size += planeSize;
    void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return false;
    auto* data = static_cast<uint8_t*>(pages);
    frame.buf[0] = av_buffer_create(data, size, unmapPages, reinterpret_cast<void*>(size), 0);
    if (!frame.buf[0]) {
        munmap(pages, size);
        return false;
    }
    return av_image_fill_pointers(frame.data, format, frame.height, data, frame.linesize) >= 0;
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
    if (orientation_.isUpright()) return scaleTo(source, outputWidth_, outputHeight_);
    // Scaled as stored, then turned: swscale cannot turn pictures.
    const bool swaps = orientation_.swapsSides();
    flk::media::Frame stored = scaleTo(source, swaps ? outputHeight_ : outputWidth_, swaps ? outputWidth_ : outputHeight_);
    return stored ? turned(*stored) : nullptr;
}

flk::media::Frame FLKFrameScaler::turned(const AVFrame& stored) const {
    const auto format = static_cast<AVPixelFormat>(stored.format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    if (!descriptor || (descriptor->flags & (AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL)))
        return nullptr;
    const bool rgb = (descriptor->flags & AV_PIX_FMT_FLAG_RGB) != 0;
    // Packed YUV shares one sample between pixels, and a quarter turn of
    // chroma subsampled unevenly would not fit: neither can be turned here.
    if (!rgb && descriptor->nb_components >= 3 && descriptor->comp[0].plane == descriptor->comp[1].plane) return nullptr;
    if (orientation_.swapsSides() && descriptor->log2_chroma_w != descriptor->log2_chroma_h) return nullptr;

    flk::media::Frame output(av_frame_alloc());
    if (!output) return nullptr;
    output->width = orientation_.swapsSides() ? stored.height : stored.width;
    output->height = orientation_.swapsSides() ? stored.width : stored.height;
    output->format = format;
    if (!allocateBuffer(*output) || av_frame_copy_props(output.get(), &stored) < 0) return nullptr;
    const int planes = av_pix_fmt_count_planes(format);
    for (int plane = 0; plane < planes; ++plane) {
        int bytesPerPixel = 0;
        bool chroma = false;
        for (int component = 0; component < descriptor->nb_components; ++component) {
            if (descriptor->comp[component].plane != plane) continue;
            bytesPerPixel = descriptor->comp[component].step;
            chroma = !rgb && (component == 1 || component == 2);
        }
        const int width = chroma ? AV_CEIL_RSHIFT(stored.width, descriptor->log2_chroma_w) : stored.width;
        const int height = chroma ? AV_CEIL_RSHIFT(stored.height, descriptor->log2_chroma_h) : stored.height;
        orientation_.turnPlane(stored.data[plane], stored.linesize[plane], width, height, output->data[plane],
                               output->linesize[plane], bytesPerPixel);
    }
    return output;
}

bool FLKFrameScaler::allocateBuffer(AVFrame& frame) const {
    return outputsOwnPages_ ? allocateOwnPages(frame) : av_frame_get_buffer(&frame, 0) >= 0;
}

flk::media::Frame FLKFrameScaler::scaleTo(const AVFrame* source, int outputWidth, int outputHeight) {
    if (!source || source->width <= 0 || source->height <= 0 || outputWidth <= 0 || outputHeight <= 0)
        return nullptr;
    bool fullRange = source->color_range == AVCOL_RANGE_JPEG;
    AVPixelFormat sourceFormat = withoutJPEGAlias(static_cast<AVPixelFormat>(source->format), &fullRange);
    context_ = sws_getCachedContext(context_, source->width, source->height, sourceFormat, outputWidth,
                                    outputHeight, outputFormat_, flags_, nullptr, nullptr, nullptr);
    if (!context_) return nullptr;

    AVColorSpace colorspace = resolvedColorspace(source);
    const int* coefficients = sws_getCoefficients(colorspace == AVCOL_SPC_BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601);
    bool outputRGB = isRGB(outputFormat_);
    int outputFullRange = outputRGB ? 1 : fullRange;
    std::array<int, 6> details{source->width, source->height, sourceFormat, outputWidth * 65536 + outputHeight,
                               colorspace, fullRange * 2 + outputFullRange};
    if (details != configuredDetails_) {
        // Setting the details rebuilds tables: only when something changed.
        sws_setColorspaceDetails(context_, coefficients, fullRange, coefficients, outputFullRange, 0, 1 << 16,
                                 1 << 16);
        configuredDetails_ = details;
    }

    flk::media::Frame output(av_frame_alloc());
    if (!output) return nullptr;
    output->width = outputWidth;
    output->height = outputHeight;
    output->format = outputFormat_;
    if (!allocateBuffer(*output)) return nullptr;
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

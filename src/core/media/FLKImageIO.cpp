#include "core/media/FLKImageIO.h"

#include <cstring>
#include <memory>
#include <string>
#include <system_error>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include "core/platform/FLKAtomicFile.h"

namespace {
constexpr const char* kErrorDomain = "FLKImageIOErrorDomain";
constexpr int kMaximumSide = 16384;

struct InputDeleter {
    void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
struct CodecDeleter {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameDeleter {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketDeleter {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct ScalerDeleter {
    void operator()(SwsContext* s) const { sws_freeContext(s); }
};
using Input = std::unique_ptr<AVFormatContext, InputDeleter>;
using Codec = std::unique_ptr<AVCodecContext, CodecDeleter>;
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;
using Packet = std::unique_ptr<AVPacket, PacketDeleter>;

std::string avText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

std::string fileURL(const std::filesystem::path& url) {
    std::error_code ec;
    auto absolute = std::filesystem::absolute(url, ec);
    return "file://" + (ec ? url : absolute).string();
}

bool fail(FLKError* error, long code, const std::string& description, const std::string& reason) {
    flk::setError(error, FLKError::make(kErrorDomain, code, description, reason));
    return false;
}

bool readFail(FLKError* error, const std::filesystem::path& url, const std::string& reason) {
    return fail(error, 1, "The image file " + fileURL(url) + " could not be read.", reason);
}

// Sends packets of the stream until the decoder gives a picture.
Frame decodeFirstPicture(AVFormatContext* input, AVCodecContext* decoder, int streamIndex) {
    Packet packet(av_packet_alloc());
    Frame frame(av_frame_alloc());
    if (!packet || !frame) return nullptr;
    bool draining = false;
    while (true) {
        int received = avcodec_receive_frame(decoder, frame.get());
        if (received == 0) return frame;
        if (received != AVERROR(EAGAIN) || draining) return nullptr;
        int read = av_read_frame(input, packet.get());
        if (read < 0) {
            draining = true;
            avcodec_send_packet(decoder, nullptr);
            continue;
        }
        if (packet->stream_index == streamIndex) avcodec_send_packet(decoder, packet.get());
        av_packet_unref(packet.get());
    }
}

std::optional<FLKImage> convertToRGBA(const AVFrame& frame) {
    std::unique_ptr<SwsContext, ScalerDeleter> scaler(
        sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), frame.width, frame.height,
                       AV_PIX_FMT_RGBA, SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!scaler) return std::nullopt;
    FLKImage image(frame.width, frame.height);
    uint8_t* destination[4] = {image.rgba.data(), nullptr, nullptr, nullptr};
    int destinationStride[4] = {image.width * 4, 0, 0, 0};
    int rows = sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, destination, destinationStride);
    if (rows != frame.height) return std::nullopt;
    return image;
}
}  // namespace

namespace flk {
std::optional<FLKImage> readImage(const std::filesystem::path& url, FLKError* error) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(url, ec)) {
        readFail(error, url, std::filesystem::exists(url, ec) ? "It is not a regular file." : "The file does not exist.");
        return std::nullopt;
    }
    AVFormatContext* rawInput = nullptr;
    int status = avformat_open_input(&rawInput, url.c_str(), nullptr, nullptr);
    if (status < 0) {
        readFail(error, url, "It is not a picture FFmpeg can open (" + avText(status) + ").");
        return std::nullopt;
    }
    Input input(rawInput);
    avformat_find_stream_info(input.get(), nullptr);
    const AVCodec* codec = nullptr;
    int streamIndex = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (streamIndex < 0 || !codec) {
        readFail(error, url, "It holds no picture.");
        return std::nullopt;
    }
    const AVCodecParameters* parameters = input->streams[streamIndex]->codecpar;
    if (parameters->width > kMaximumSide || parameters->height > kMaximumSide) {
        readFail(error, url, "The picture is larger than 16384 pixels on a side.");
        return std::nullopt;
    }
    Codec decoder(avcodec_alloc_context3(codec));
    if (!decoder || avcodec_parameters_to_context(decoder.get(), parameters) < 0 ||
        avcodec_open2(decoder.get(), codec, nullptr) < 0) {
        readFail(error, url, "Its picture format cannot be decoded.");
        return std::nullopt;
    }
    Frame frame = decodeFirstPicture(input.get(), decoder.get(), streamIndex);
    if (!frame || frame->width <= 0 || frame->height <= 0) {
        readFail(error, url, "The picture data is damaged or empty.");
        return std::nullopt;
    }
    if (frame->width > kMaximumSide || frame->height > kMaximumSide) {
        readFail(error, url, "The picture is larger than 16384 pixels on a side.");
        return std::nullopt;
    }
    auto image = convertToRGBA(*frame);
    if (!image) readFail(error, url, "Its pixels could not be converted to RGBA.");
    return image;
}

bool writePNG(const FLKImage& image, const std::filesystem::path& url, FLKError* error) {
    auto writeFail = [&](const std::string& reason) {
        return fail(error, 2, "The image file " + fileURL(url) + " could not be written.", reason);
    };
    if (image.isEmpty() || image.rgba.size() < static_cast<size_t>(image.width) * image.height * 4) {
        return writeFail("The image is empty.");
    }
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    if (!codec) return writeFail("This FFmpeg has no PNG encoder.");
    Codec encoder(avcodec_alloc_context3(codec));
    if (!encoder) return writeFail("Out of memory.");
    encoder->width = image.width;
    encoder->height = image.height;
    encoder->pix_fmt = AV_PIX_FMT_RGBA;
    encoder->time_base = AVRational{1, 1};
    int status = avcodec_open2(encoder.get(), codec, nullptr);
    if (status < 0) return writeFail("The PNG encoder did not start (" + avText(status) + ").");

    Frame frame(av_frame_alloc());
    if (!frame) return writeFail("Out of memory.");
    frame->width = image.width;
    frame->height = image.height;
    frame->format = AV_PIX_FMT_RGBA;
    if (av_frame_get_buffer(frame.get(), 0) < 0) return writeFail("Out of memory.");
    for (int row = 0; row < image.height; ++row) {
        std::memcpy(frame->data[0] + static_cast<size_t>(row) * frame->linesize[0],
                    image.rgba.data() + static_cast<size_t>(row) * image.width * 4, static_cast<size_t>(image.width) * 4);
    }
    frame->pts = 0;

    std::string bytes;
    Packet packet(av_packet_alloc());
    if (!packet) return writeFail("Out of memory.");
    status = avcodec_send_frame(encoder.get(), frame.get());
    if (status >= 0) status = avcodec_send_frame(encoder.get(), nullptr);
    while (status >= 0) {
        status = avcodec_receive_packet(encoder.get(), packet.get());
        if (status < 0) break;
        bytes.append(reinterpret_cast<const char*>(packet->data), static_cast<size_t>(packet->size));
        av_packet_unref(packet.get());
    }
    if (status != AVERROR_EOF || bytes.empty()) return writeFail("PNG encoding failed (" + avText(status) + ").");
    return writeFileAtomically(url, bytes, error);
}
}  // namespace flk

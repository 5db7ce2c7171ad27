#include "core/media/FLKMediaSupport.h"

#include <cstring>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/error.h>
}

namespace flk::media {

void setLibraryLogVerbose(bool verbose) { av_log_set_level(verbose ? AV_LOG_INFO : AV_LOG_ERROR); }

std::string avErrorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return text;
}

FLKError makeError(long code, std::string description, std::string reason) {
    return FLKError::make(kErrorDomain, code, std::move(description), std::move(reason));
}

void OutputCloser::operator()(AVFormatContext* context) const {
    if (!context) return;
    if (context->pb && !(context->oformat->flags & AVFMT_NOFILE)) avio_closep(&context->pb);
    avformat_free_context(context);
}

InputContext openInput(const std::string& path, std::string* reason) {
    AVFormatContext* raw = nullptr;
    int status = avformat_open_input(&raw, path.c_str(), nullptr, nullptr);
    if (status < 0) {
        *reason = "Cannot open \"" + path + "\": " + avErrorText(status) + ".";
        return nullptr;
    }
    InputContext input(raw);
    status = avformat_find_stream_info(input.get(), nullptr);
    if (status < 0) {
        *reason = "Cannot read the streams of \"" + path + "\": " + avErrorText(status) + ".";
        return nullptr;
    }
    return input;
}

OutputContext openOutput(const std::string& path, std::string* reason) {
    AVFormatContext* raw = nullptr;
    int status = avformat_alloc_output_context2(&raw, nullptr, "mp4", path.c_str());
    if (status < 0 || !raw) {
        *reason = "Cannot create an MP4 writer for \"" + path + "\": " + avErrorText(status) + ".";
        return nullptr;
    }
    OutputContext output(raw);
    status = avio_open(&output->pb, path.c_str(), AVIO_FLAG_WRITE);
    if (status < 0) {
        *reason = "Cannot create \"" + path + "\": " + avErrorText(status) + ".";
        return nullptr;
    }
    return output;
}

FLKVideoOrientation orientationOfStream(const AVStream* stream) {
    size_t size = 0;
    const uint8_t* matrix = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(int32_t)) return {};
    int32_t values[9];
    std::memcpy(values, matrix, sizeof values);
    return FLKVideoOrientation::orientationWithDisplayMatrix(values);
}

bool setOrientationOfStream(AVStream* stream, const FLKVideoOrientation& orientation) {
    if (orientation.isUpright()) return true;
    auto* matrix = reinterpret_cast<int32_t*>(
        av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(int32_t)));
    if (!matrix) return false;
    orientation.writeDisplayMatrix(matrix);
    return true;
}

double secondsOf(int64_t timestamp, AVRational timeBase, int64_t origin) {
    if (origin != AV_NOPTS_VALUE) timestamp -= origin;
    return static_cast<double>(timestamp) * av_q2d(timeBase);
}

}  // namespace flk::media

#include "FLKMediaTestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace flk::test {

namespace {
// Encoder statistics would drown the test output.
const bool quietFFmpeg = [] {
    av_log_set_level(AV_LOG_ERROR);
    return true;
}();
}  // namespace

std::filesystem::path mediaPath(const std::string& name) {
    const char* home = std::getenv("FLICKWELL_HOME");
    std::filesystem::path folder = std::filesystem::path(home ? home : "/tmp") / "media-tests";
    std::filesystem::create_directories(folder);
    return folder / name;
}

std::string syntheticVideo(const std::string& name, const FLKSyntheticVideo::Options& options) {
    static std::map<std::string, std::string> made;
    auto found = made.find(name);
    if (found != made.end()) return found->second;
    std::string path = mediaPath(name).string();
    FLKError error;
    EXPECT_TRUE(FLKSyntheticVideo::writeVideo(path, options, &error)) << error.fullMessage();
    made[name] = path;
    return path;
}

StreamFacts probeStream(const std::string& path, int mediaType) {
    StreamFacts facts;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return facts;
    if (avformat_find_stream_info(format, nullptr) >= 0) {
        int index = av_find_best_stream(format, static_cast<AVMediaType>(mediaType), -1, -1, nullptr, 0);
        if (index >= 0) {
            const AVStream* stream = format->streams[index];
            const AVCodecParameters* p = stream->codecpar;
            facts.codec = avcodec_get_name(p->codec_id);
            facts.profile = p->profile;
            if (mediaType == AVMEDIA_TYPE_VIDEO) {
                const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(p->format));
                facts.pixelFormat = name ? name : "";
            }
            facts.colorPrimaries = p->color_primaries;
            facts.colorTransfer = p->color_trc;
            facts.colorSpace = p->color_space;
            facts.colorRange = p->color_range;
            facts.fps = av_q2d(stream->avg_frame_rate);
            facts.duration = stream->duration * av_q2d(stream->time_base);
            AVPacket* packet = av_packet_alloc();
            while (av_read_frame(format, packet) >= 0) {
                if (packet->stream_index == index) ++facts.packets;
                av_packet_unref(packet);
            }
            av_packet_free(&packet);
        }
    }
    avformat_close_input(&format);
    return facts;
}

std::vector<std::string> topLevelBoxes(const std::string& path) {
    std::vector<std::string> names;
    std::ifstream file(path, std::ios::binary);
    while (file) {
        unsigned char header[8];
        if (!file.read(reinterpret_cast<char*>(header), 8)) break;
        uint64_t size = (uint64_t(header[0]) << 24) | (header[1] << 16) | (header[2] << 8) | header[3];
        names.emplace_back(reinterpret_cast<char*>(header + 4), 4);
        uint64_t headerSize = 8;
        if (size == 1) {
            unsigned char large[8];
            if (!file.read(reinterpret_cast<char*>(large), 8)) break;
            size = 0;
            for (unsigned char byte : large) size = (size << 8) | byte;
            headerSize = 16;
        }
        if (size < headerSize) break;  // 0 means "to the end of the file"
        file.seekg(static_cast<std::streamoff>(size - headerSize), std::ios::cur);
    }
    return names;
}

}  // namespace flk::test

#pragma once

// Reads an exported MP4 back with libavformat, independently of the writers.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "core/media/FLKSyntheticVideo.h"

namespace flktest {

struct ProbedMovie {
    bool opened = false;
    std::string videoCodec;
    int profile = -1;
    std::string pixelFormat;
    double frameRate = 0;
    int width = 0;
    int height = 0;
    int64_t videoPackets = 0;
    double videoDuration = 0;
    bool hasAAC = false;
    double audioDuration = 0;
    // Frame numbers drawn by FLKSyntheticVideo in the first decoded frames.
    std::vector<std::optional<uint32_t>> firstNumbers;
};

inline double seconds(int64_t value, AVRational base) { return value == AV_NOPTS_VALUE ? 0 : value * av_q2d(base); }

inline ProbedMovie probeMovie(const std::filesystem::path& path, int numbersToRead = 0) {
    ProbedMovie movie;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return movie;
    avformat_find_stream_info(format, nullptr);
    movie.opened = true;
    int videoIndex = -1, audioIndex = -1;
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVCodecParameters* par = format->streams[i]->codecpar;
        if (par->codec_type == AVMEDIA_TYPE_VIDEO && videoIndex < 0) {
            videoIndex = static_cast<int>(i);
            movie.videoCodec = avcodec_get_name(par->codec_id);
            movie.profile = par->profile;
            const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(par->format));
            movie.pixelFormat = name ? name : "";
            movie.frameRate = av_q2d(format->streams[i]->avg_frame_rate);
            movie.width = par->width;
            movie.height = par->height;
        } else if (par->codec_type == AVMEDIA_TYPE_AUDIO && audioIndex < 0) {
            audioIndex = static_cast<int>(i);
            movie.hasAAC = par->codec_id == AV_CODEC_ID_AAC;
        }
    }
    AVCodecContext* decoder = nullptr;
    if (videoIndex >= 0 && numbersToRead > 0) {
        const AVCodec* codec = avcodec_find_decoder(format->streams[videoIndex]->codecpar->codec_id);
        decoder = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(decoder, format->streams[videoIndex]->codecpar);
        avcodec_open2(decoder, codec, nullptr);
    }
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    auto readFrames = [&] {
        while (avcodec_receive_frame(decoder, frame) == 0) {
            if (static_cast<int>(movie.firstNumbers.size()) < numbersToRead) {
                movie.firstNumbers.push_back(FLKSyntheticVideo::numberInLuma(frame->data[0], frame->linesize[0],
                                                                             frame->width, frame->height));
            }
        }
    };
    int64_t videoEnd = 0, audioEnd = 0;
    while (av_read_frame(format, packet) >= 0) {
        AVStream* stream = format->streams[packet->stream_index];
        const int64_t end = packet->pts + packet->duration;
        if (packet->stream_index == videoIndex) {
            ++movie.videoPackets;
            videoEnd = std::max(videoEnd, end);
            if (decoder && avcodec_send_packet(decoder, packet) >= 0) readFrames();
        } else if (packet->stream_index == audioIndex) {
            audioEnd = std::max(audioEnd, end);
        }
        (void)stream;
        av_packet_unref(packet);
    }
    if (decoder) {
        avcodec_send_packet(decoder, nullptr);
        readFrames();
    }
    if (videoIndex >= 0) movie.videoDuration = seconds(videoEnd, format->streams[videoIndex]->time_base);
    if (audioIndex >= 0) movie.audioDuration = seconds(audioEnd, format->streams[audioIndex]->time_base);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&format);
    return movie;
}

// Top-level box types of an ISO media file, in file order.
inline std::vector<std::string> topLevelBoxes(const std::filesystem::path& path) {
    std::vector<std::string> boxes;
    std::ifstream file(path, std::ios::binary);
    const auto fileSize = static_cast<uint64_t>(std::filesystem::file_size(path));
    uint64_t offset = 0;
    while (offset + 8 <= fileSize) {
        unsigned char header[16];
        file.seekg(static_cast<std::streamoff>(offset));
        if (!file.read(reinterpret_cast<char*>(header), 8)) break;
        uint64_t size = (uint64_t(header[0]) << 24) | (uint64_t(header[1]) << 16) | (uint64_t(header[2]) << 8) | header[3];
        boxes.emplace_back(reinterpret_cast<char*>(header + 4), 4);
        if (size == 1) {
            if (!file.read(reinterpret_cast<char*>(header + 8), 8)) break;
            size = 0;
            for (int i = 8; i < 16; ++i) size = (size << 8) | header[i];
        } else if (size == 0) {
            break;
        }
        if (size < 8) break;
        offset += size;
    }
    return boxes;
}

inline bool moovBeforeMdat(const std::filesystem::path& path) {
    const auto boxes = topLevelBoxes(path);
    const auto moov = std::find(boxes.begin(), boxes.end(), "moov");
    const auto mdat = std::find(boxes.begin(), boxes.end(), "mdat");
    return moov != boxes.end() && mdat != boxes.end() && moov < mdat;
}

// Files in `folder` (not recursive), to show that nothing was left behind.
inline std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) files.push_back(entry.path());
    return files;
}

}  // namespace flktest

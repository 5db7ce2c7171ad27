#include "FLKCaptureTestSupport.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/capture/FLKCaptureDecoder.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/platform/FLKRunLoopMainQueue.h"
#include "core/media/FLKMediaSupport.h"

namespace flk::test {

std::vector<DecodedFrame> decodeAll(const std::filesystem::path& file) {
    std::vector<DecodedFrame> frames;
    std::string reason;
    auto input = flk::media::openInput(file.string(), &reason);
    if (!input) return frames;
    int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) return frames;
    AVStream* stream = input->streams[index];
    auto decoder = FLKCaptureDecoder::make(stream->codecpar, &reason);
    if (!decoder) return frames;
    flk::media::Packet packet(av_packet_alloc());
    std::vector<double> times;
    auto take = [&](std::shared_ptr<const FLKPixelBuffer> pixels) {
        frames.push_back(DecodedFrame{std::move(pixels), 0});
    };
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (packet->stream_index == index) {
            times.push_back(flk::media::secondsOf(packet->pts, stream->time_base));
            decoder->decode(packet.get(), take);
        }
        av_packet_unref(packet.get());
    }
    decoder->decode(nullptr, take);
    std::sort(times.begin(), times.end());
    for (size_t i = 0; i < frames.size() && i < times.size(); ++i) frames[i].time = times[i];
    return frames;
}

std::optional<std::filesystem::path> finishRecording(FLKDeviceScreenRecorder& recorder, FLKRunLoopMainQueue& queue) {
    std::optional<std::filesystem::path> result;
    bool done = false;
    recorder.finish([&](std::optional<std::filesystem::path> url) {
        result = url;
        done = true;
    });
    // A safety net against a hang, not a timing: the file is complete when `done` is.
    queue.runUntil([&] { return done; }, 60);
    return result;
}

bool makeTestPattern(const std::filesystem::path& file, int frames, int width, int height) {
    std::string command = "ffmpeg -nostdin -hide_banner -loglevel error -y -f lavfi -i testsrc2=size=" +
                          std::to_string(width) + "x" + std::to_string(height) +
                          ":rate=30 -frames:v " + std::to_string(frames) +
                          " -c:v libx264 -bf 0 -g 1000 -pix_fmt yuv420p -f h264 '" + file.string() + "'";
    return std::system(command.c_str()) == 0 && std::filesystem::file_size(file) > 0;
}

bool samePixels(const FLKPixelBuffer& a, const FLKPixelBuffer& b) {
    return a.width == b.width && a.height == b.height && a.bgra == b.bgra;
}

bool RecordingDelegate::saw(const std::string& event) const {
    return std::find(events.begin(), events.end(), event) != events.end();
}

void PixelProbe::recorderDidOutputSampleBuffer(FLKDeviceScreenRecorder&, const FLKSampleBuffer& sampleBuffer) {
    const auto& p = *sampleBuffer.imageBuffer;
    size_t offset = static_cast<size_t>(p.height / 4) * p.stride + static_cast<size_t>(p.width / 4) * 4;
    colours.push_back({p.bgra[offset], p.bgra[offset + 1], p.bgra[offset + 2]});
    times.push_back(sampleBuffer.presentationTime);
}

}  // namespace flk::test

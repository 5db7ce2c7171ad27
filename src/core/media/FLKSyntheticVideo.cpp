#include "core/media/FLKSyntheticVideo.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <system_error>
#include <vector>

#include "core/media/FLKAudioEncoder.h"
#include "core/media/FLKAudioMuxer.h"
#include "core/media/FLKMediaSupport.h"
#include "core/media/FLKVideoEncoder.h"
#include "core/platform/FLKAtomicFile.h"

namespace {

constexpr uint8_t kBlockOn = 255;
constexpr uint8_t kBlockOff = 0;

int codeBandHeight(int height) { return std::max(2, height / 8); }

void fill(FLKPixelBuffer& buffer, int x0, int y0, int x1, int y1, uint8_t b, uint8_t g, uint8_t r) {
    for (int y = y0; y < y1; ++y) {
        uint8_t* row = buffer.bgra.data() + static_cast<size_t>(y) * buffer.stride;
        for (int x = x0; x < x1; ++x) {
            row[x * 4 + 0] = b;
            row[x * 4 + 1] = g;
            row[x * 4 + 2] = r;
            row[x * 4 + 3] = 255;
        }
    }
}

bool fail(FLKError* error, const std::string& path, const std::string& reason) {
    flk::setError(error, flk::media::makeError(flk::media::kErrorWriteFailed,
                                               "The test media \"" + path + "\" could not be written.", reason));
    return false;
}

}  // namespace

FLKPixelBuffer FLKSyntheticVideo::frameWithNumber(int width, int height, uint32_t number) {
    FLKPixelBuffer buffer(width, height);
    int band = codeBandHeight(height);
    // A moving gradient below the code, so that frames differ everywhere.
    for (int y = band; y < height; ++y) {
        uint8_t* row = buffer.bgra.data() + static_cast<size_t>(y) * buffer.stride;
        for (int x = 0; x < width; ++x) {
            row[x * 4 + 0] = static_cast<uint8_t>((x + number * 4) & 0xff);
            row[x * 4 + 1] = static_cast<uint8_t>((y + number * 2) & 0xff);
            row[x * 4 + 2] = static_cast<uint8_t>(((x + y) / 2) & 0xff);
            row[x * 4 + 3] = 255;
        }
    }
    for (int bit = 0; bit < kCodeBits; ++bit) {
        int x0 = bit * width / kCodeBits;
        int x1 = (bit + 1) * width / kCodeBits;
        uint8_t level = (number >> (kCodeBits - 1 - bit)) & 1 ? kBlockOn : kBlockOff;
        fill(buffer, x0, 0, x1, band, level, level, level);
    }
    return buffer;
}

std::optional<uint32_t> FLKSyntheticVideo::numberInLuma(const uint8_t* luma, int stride, int width, int height) {
    if (!luma || width < kCodeBits * 2 || height < 8) return std::nullopt;
    int band = codeBandHeight(height);
    uint32_t number = 0;
    for (int bit = 0; bit < kCodeBits; ++bit) {
        int x0 = bit * width / kCodeBits, x1 = (bit + 1) * width / kCodeBits;
        // The middle of each block: edges blur under compression and scaling.
        int insetX = (x1 - x0) / 4, insetY = band / 4;
        long sum = 0, count = 0;
        for (int y = insetY; y < band - insetY; ++y)
            for (int x = x0 + insetX; x < x1 - insetX; ++x, ++count) sum += luma[static_cast<size_t>(y) * stride + x];
        if (count == 0) return std::nullopt;
        long mean = sum / count;
        if (mean > 80 && mean < 176) return std::nullopt;
        number = (number << 1) | (mean >= 176 ? 1u : 0u);
    }
    return number;
}

std::vector<double> FLKSyntheticVideo::frameTimesOf(const Options& options) {
    if (!options.frameTimes.empty()) return options.frameTimes;
    std::vector<double> times;
    for (int n = 0; n < options.frameCount; ++n) times.push_back(static_cast<double>(n) / options.fps);
    return times;
}

bool FLKSyntheticVideo::writeVideo(const std::string& path, const Options& options, FLKError* error) {
    namespace fs = std::filesystem;
    // Given times are kept to a 90 kHz clock: fine enough for every usual
    // frame rate and for times in milliseconds.
    const int ticksPerSecond = options.frameTimes.empty() ? options.fps : 90000;
    std::string videoPath = options.withTone ? flk::siblingTemporaryURL(path).string() : path;
    FLKVideoEncoder::Options encoderOptions;
    encoderOptions.width = options.width;
    encoderOptions.height = options.height;
    encoderOptions.fps = options.fps;
    encoderOptions.preset = options.preset;
    encoderOptions.pixelFormat = options.pixelFormat;
    encoderOptions.orientation = options.orientation;
    encoderOptions.timeScale = ticksPerSecond;
    FLKVideoEncoder encoder(videoPath, encoderOptions);
    if (!encoder.start(error)) return false;
    const bool swaps = options.orientation.swapsSides();
    const int shownWidth = swaps ? options.height : options.width;
    const int shownHeight = swaps ? options.width : options.height;
    const std::vector<double> times = frameTimesOf(options);
    for (size_t n = 0; n < times.size(); ++n) {
        const int64_t ticks = std::llround(times[n] * ticksPerSecond);
        const int64_t lastDuration =
            options.endTime > times[n] ? std::llround(options.endTime * ticksPerSecond) - ticks : 0;
        const int64_t duration = n + 1 == times.size() ? lastDuration : 0;
        const FLKPixelBuffer shown = frameWithNumber(shownWidth, shownHeight, static_cast<uint32_t>(n));
        if (options.orientation.isUpright()) {
            if (!encoder.append(shown, ticks, duration, error)) return false;
            continue;
        }
        FLKPixelBuffer stored(options.width, options.height);
        options.orientation.inverted().turnPlane(shown.bgra.data(), shown.stride, shownWidth, shownHeight,
                                                 stored.bgra.data(), stored.stride, 4);
        if (!encoder.append(stored, ticks, duration, error)) return false;
    }
    if (!encoder.finish(error)) return false;
    if (!options.withTone) return true;

    std::string tonePath = flk::siblingTemporaryURL(path).string();
    double seconds = options.endTime > 0 ? options.endTime : (times.empty() ? 0.0 : times.back()) + 1.0 / options.fps;
    bool ok = writeTone(tonePath, seconds + 0.5, 440.0, error) && FLKAudioMuxer::muxVideo(videoPath, tonePath, path, error);
    std::error_code ignored;
    fs::remove(videoPath, ignored);
    fs::remove(tonePath, ignored);
    return ok;
}

bool FLKSyntheticVideo::writeTone(const std::string& path, double seconds, double frequency, FLKError* error) {
    constexpr int kRate = 48000;
    std::string reason;
    flk::media::OutputContext output = flk::media::openOutput(path, &reason);
    if (!output) return fail(error, path, reason);
    auto total = static_cast<int64_t>(std::llround(seconds * kRate));
    std::unique_ptr<FLKAudioEncoder> encoder = FLKAudioEncoder::addToOutput(output.get(), kRate, 1, total, &reason);
    if (!encoder) return fail(error, path, reason);
    int status = avformat_write_header(output.get(), nullptr);
    if (status < 0) return fail(error, path, flk::media::avErrorText(status));
    std::vector<float> samples(4096);
    for (int64_t start = 0; start < total; start += static_cast<int64_t>(samples.size())) {
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = 0.25f * static_cast<float>(std::sin(2 * std::numbers::pi * frequency *
                                                             static_cast<double>(start + static_cast<int64_t>(i)) / kRate));
        const float* planes[1] = {samples.data()};
        if (!encoder->pushPlanar(planes, static_cast<int>(samples.size()), &reason)) return fail(error, path, reason);
    }
    if (!encoder->finish(&reason)) return fail(error, path, reason);
    status = av_write_trailer(output.get());
    if (status < 0) return fail(error, path, flk::media::avErrorText(status));
    return true;
}

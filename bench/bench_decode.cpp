#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

extern "C" {
#include <libavutil/log.h>
}

#include "core/media/FLKAssetReader.h"
#include "core/media/FLKSyntheticVideo.h"

// One 5-second segment of a portrait 1080 x 1920, 30 fps H.264 recording
// decoded to 720 x 720 NV12, as a timeline segment reader does. The recording
// is generated on first use; FLK_DECODE_BENCH_VIDEO names it so that other
// tools can decode the very same file.
static const std::string& recordingPath() {
    static const std::string path = [] {
        const char* given = std::getenv("FLK_DECODE_BENCH_VIDEO");
        std::string file = given ? given : (std::filesystem::temp_directory_path() / "flk-bench-decode.mp4").string();
        if (!std::filesystem::exists(file)) {
            FLKSyntheticVideo::Options options;
            options.width = 1080;
            options.height = 1920;
            options.fps = 30;
            options.frameCount = 180;
            options.preset = "veryfast";  // B-frames and CABAC, like a real recording
            FLKError error;
            if (!FLKSyntheticVideo::writeVideo(file, options, &error)) {
                std::fprintf(stderr, "%s\n", error.fullMessage().c_str());
                std::exit(1);
            }
        }
        return file;
    }();
    return path;
}

static void BM_DecodeSegment1080x1920To720NV12(benchmark::State& state) {
    av_log_set_level(AV_LOG_ERROR);
    auto asset = FLKAsset::assetWithPath(recordingPath());
    int64_t frames = 0;
    for (auto _ : state) {
        FLKAssetReader reader(asset, 0, 5);
        if (!reader.startReading()) {
            state.SkipWithError(reader.error().fullMessage().c_str());
            return;
        }
        while (auto frame = reader.copyNextSampleBuffer()) {
            benchmark::DoNotOptimize(frame->yPlane());
            ++frames;
        }
    }
    state.counters["frames_per_second"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kIsRate);
    state.counters["frames_per_segment"] = static_cast<double>(frames) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_DecodeSegment1080x1920To720NV12)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

BENCHMARK_MAIN();

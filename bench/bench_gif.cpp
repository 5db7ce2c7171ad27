// Encodes a synthetic 3-second screen recording (30 fps rendered, 15 fps GIF)
// with the shared and the per-frame palette and reports size and quality
// against the source frames. FLK_GIF_BENCH_DIR, when set, keeps the GIFs and
// writes the frames the GIF holds as raw RGB (source.rgb) for comparisons.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "core/exporter/FLKGIFRecorder.h"
#include "core/exporter/FLKGIFTestSupport.h"

namespace fs = std::filesystem;

namespace {
constexpr int kWidth = 360, kHeight = 780, kBuffers = 90;

// CPU seconds of the whole process, the encoder's worker thread included.
double processCPUSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

fs::path outputFolder() {
    if (const char* dir = std::getenv("FLK_GIF_BENCH_DIR")) return dir;
    return fs::temp_directory_path();
}

const std::vector<FLKPixelBuffer>& clip() {
    static const std::vector<FLKPixelBuffer> frames = [] {
        std::vector<FLKPixelBuffer> all;
        for (int i = 0; i < kBuffers; ++i) all.push_back(flktest::screenRecordingFrame(kWidth, kHeight, i));
        return all;
    }();
    return frames;
}

// The buffers a 30 -> 15 fps recorder keeps after dropping the first.
std::vector<int> keptBuffers() {
    FLKFrameCalculator calculator(30, 15, kBuffers);
    std::vector<int> kept;
    for (int i = 1; i < kBuffers; ++i) {
        if (calculator.advanceWithFrameAtIndex(kept.size())) kept.push_back(i);
    }
    return kept;
}

void writeSource(const fs::path& url, const std::vector<int>& kept) {
    std::ofstream out(url, std::ios::binary);
    for (int index : kept) {
        auto rgba = flktest::rgbaOf(clip()[index]);
        for (size_t i = 0; i < rgba.size(); i += 4) out.write(reinterpret_cast<const char*>(&rgba[i]), 3);
    }
}

void BM_GIFScreenRecording(benchmark::State& state) {
    const auto mode = static_cast<FLKGIFRecorder::PaletteMode>(state.range(0));
    const fs::path url = outputFolder() / (mode == FLKGIFRecorder::PaletteMode::Shared ? "shared.gif" : "perframe.gif");
    const auto& frames = clip();
    const double cpuBefore = processCPUSeconds();
    for (auto _ : state) {
        auto options = FLKExportOptions::exportOptionsWithType(FLKExportTypeGIF, url, FLKRect(0, 0, kWidth, kHeight),
                                                               FLKSize{kWidth, kHeight}, kBuffers, 30, 15, std::nullopt);
        FLKGIFRecorder recorder(options, mode);
        FLKError error;
        if (!recorder.record(&error)) state.SkipWithError(error.fullMessage().c_str());
        for (const auto& frame : frames) recorder.appendBuffer(frame);
        if (!recorder.finish(&error)) state.SkipWithError(error.fullMessage().c_str());
    }
    const double cpuSeconds = (processCPUSeconds() - cpuBefore) / static_cast<double>(state.iterations());
    const std::vector<int> kept = keptBuffers();
    flktest::DecodedGIF gif = flktest::decodeGIF(url);
    double psnr = 0, ssim = 0;
    for (size_t k = 0; k < gif.frames.size() && k < kept.size(); ++k) {
        auto source = flktest::rgbaOf(frames[kept[k]]);
        psnr += flktest::psnr(gif.frames[k], source);
        ssim += flktest::ssim(gif.frames[k], source, kWidth, kHeight);
    }
    const double count = gif.frames.empty() ? 1.0 : static_cast<double>(gif.frames.size());
    state.counters["cpu_ms"] = cpuSeconds * 1000.0;
    state.counters["bytes"] = static_cast<double>(fs::file_size(url));
    state.counters["frames"] = static_cast<double>(gif.frames.size());
    state.counters["psnr"] = psnr / count;
    state.counters["ssim"] = ssim / count;
    if (std::getenv("FLK_GIF_BENCH_DIR")) {
        writeSource(outputFolder() / "source.rgb", kept);
    } else {
        fs::remove(url);
    }
}
}  // namespace

BENCHMARK(BM_GIFScreenRecording)
    ->Arg(static_cast<int>(FLKGIFRecorder::PaletteMode::Shared))
    ->Arg(static_cast<int>(FLKGIFRecorder::PaletteMode::PerFrame))
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

BENCHMARK_MAIN();

// Off-screen rendering and read-back of a portrait export frame: gradient
// background, a perspective video quad (grid 128) and device artwork on top,
// at 1080 x 1920, antialiased as by 4x multisampling - analytically or with a
// multisampled target. Reports milliseconds per frame, wall time and process
// CPU time (the rasteriser's worker threads included; Google Benchmark's own
// CPU column counts only the benchmark's thread).
#include <benchmark/benchmark.h>
#include <epoxy/gl.h>

#include <chrono>
#include <ctime>
#include <mutex>

#include "core/render/FLKOffScreenRenderer.h"
#include "core/scene/FLKColorGradientSprite.h"
#include "core/scene/FLKTexturedSprite.h"

namespace {
constexpr int kWidth = 1080, kHeight = 1920;

double processCPUSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::shared_ptr<FLKGPUTexture> videoFrameTexture() {
    const int w = 720, h = 1280;
    std::vector<uint8_t> pixels(size_t(w) * h * 4);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t* p = &pixels[(size_t(y) * w + x) * 4];
            p[0] = uint8_t(x * 255 / w);
            p[1] = uint8_t(y * 255 / h);
            p[2] = uint8_t(((x / 40) + (y / 40)) % 2 ? 220 : 40);
            p[3] = 255;
        }
    }
    return std::make_shared<FLKGPUTexture>(w, h, FLKPixelFormat::BGRA8, std::move(pixels));
}

// A dark bezel with a transparent screen opening, as device artwork is.
std::shared_ptr<FLKGPUTexture> artworkTexture() {
    const int w = 900, h = 1700;
    std::vector<uint8_t> pixels(size_t(w) * h * 4, 0);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            bool screen = x > 60 && x < w - 60 && y > 120 && y < h - 120;
            if (screen) continue;
            uint8_t* p = &pixels[(size_t(y) * w + x) * 4];
            p[0] = p[1] = p[2] = 28;
            p[3] = 255;
        }
    }
    return std::make_shared<FLKGPUTexture>(w, h, FLKPixelFormat::RGBA8, std::move(pixels));
}

// kFlatVideo: the video as an upright rectangle, to price the perspective.
enum Layers { kBackground = 1, kVideo = 2, kArtwork = 4, kAll = 7, kFlatVideo = 8 };

std::shared_ptr<FLKScene> exportScene(int layers, unsigned videoGridSize = 128) {
    auto scene = std::make_shared<FLKScene>();
    scene->setZOrder(0);
    scene->setMainCamera(FLKCamera::cameraWithFrame({0, 0, kWidth, kHeight}));
    if (layers & kBackground) {
        auto background = FLKColorGradientSprite::colorGradientSpriteWithColors(
            {{0.2, 0.3, 0.9, 1}, {0.5, 0.2, 0.8, 1}, {0.9, 0.4, 0.3, 1}, {0.95, 0.8, 0.2, 1}});
        background->setShape(FLKPlane::planeWithFrame({0, 0, kWidth, kHeight}));
        scene->addChild(background);
    }
    if (layers & kVideo) {
        auto video = std::make_shared<FLKTexturedSprite>(videoFrameTexture());
        video->setShape(std::make_shared<FLKPlane>(FLKPoint{150, 230}, FLKPoint{930, 180}, FLKPoint{170, 1700},
                                                   FLKPoint{900, 1760}, videoGridSize));
        scene->addChild(video);
    }
    if (layers & kFlatVideo) {
        auto video = std::make_shared<FLKTexturedSprite>(videoFrameTexture());
        video->setShape(std::make_shared<FLKPlane>(FLKPoint{150, 200}, FLKPoint{930, 200}, FLKPoint{150, 1730},
                                                   FLKPoint{930, 1730}, videoGridSize));
        scene->addChild(video);
    }
    if (layers & kArtwork) {
        auto artwork = std::make_shared<FLKTexturedSprite>(artworkTexture());
        artwork->setShape(FLKPlane::planeWithFrame({90, 110, 900, 1700}));
        scene->addChild(artwork);
    }
    return scene;
}

FLKRenderer::Antialiasing antialiasing(int64_t analytic) {
    return analytic ? FLKRenderer::Antialiasing::analyticCoverage : FLKRenderer::Antialiasing::multisample;
}

class Timer : public FLKRenderOutput {
public:
    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& buffer) override {
        std::lock_guard lock(mutex);
        if (frames++ == 0) {
            first = std::chrono::steady_clock::now();
            firstCPU = processCPUSeconds();
        }
        last = std::chrono::steady_clock::now();
        lastCPU = processCPUSeconds();
        checksum += buffer.bgra[buffer.bgra.size() / 2];
    }
    std::mutex mutex;
    int frames = 0;  // guarded by mutex
    std::chrono::steady_clock::time_point first, last;  // guarded by mutex
    double firstCPU = 0, lastCPU = 0;                   // guarded by mutex
    unsigned checksum = 0;                              // guarded by mutex
};

// The whole export path: draw, read back, deliver. Time between the first
// and the last delivered frame over the frames in between: steady-state
// cost, without context and texture set-up.
void BM_OffScreenExportFrame(benchmark::State& state) {
    auto scene = exportScene(kAll);
    const unsigned frames = 12;
    double cpuTotal = 0;
    for (auto _ : state) {
        auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(*scene, {0, 0, kWidth, kHeight}, 30, frames);
        if (!renderer) {
            state.SkipWithError("no OpenGL 4.5 context");
            return;
        }
        renderer->setAntialiasing(antialiasing(state.range(0)));
        renderer->setTexturedGeometry(state.range(1) ? FLKRenderer::TexturedGeometry::projectiveQuads
                                                     : FLKRenderer::TexturedGeometry::planeGrids);
        renderer->setPipelinedReadBack(state.range(2) != 0);
        auto timer = std::make_shared<Timer>();
        renderer->setRenderOutput(timer);
        renderer->renderAllFrames();
        renderer->waitUntilFinished();
        std::lock_guard lock(timer->mutex);
        double seconds = std::chrono::duration<double>(timer->last - timer->first).count() / (timer->frames - 1);
        state.SetIterationTime(seconds);
        cpuTotal += (timer->lastCPU - timer->firstCPU) / (timer->frames - 1);
        benchmark::DoNotOptimize(timer->checksum);
    }
    state.counters["cpu_ms_per_frame"] = benchmark::Counter(cpuTotal * 1000, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_OffScreenExportFrame)
    ->ArgNames({"analytic", "projectiveQuads", "pipelinedReadBack"})
    ->Args({1, 1, 1})
    ->Args({1, 1, 0})
    ->Args({0, 1, 1})
    ->Args({0, 0, 0})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);

class TextureTarget : public FLKRendererDataSource {
public:
    std::shared_ptr<FLKGPUTexture> textureForRenderer(FLKRenderer&) override { return texture; }
    FLKSize drawableSizeForRenderer(FLKRenderer&) override { return {720, 720}; }
    std::shared_ptr<FLKGPUTexture> texture;
};

// Drawing alone, without read-back, for each layer of the scene by itself.
void BM_DrawFrame(benchmark::State& state) {
    auto context = FLKContext::contextWithSize({720, 720});
    if (!context->isValid()) {
        state.SkipWithError("no OpenGL 4.5 context");
        return;
    }
    FLKContext::Scope scope(*context);
    auto target = std::make_shared<TextureTarget>();
    target->texture = FLKGPUTexture::renderTarget(kWidth, kHeight, FLKPixelFormat::BGRA8);
    FLKRenderer renderer(context, 3);
    renderer.setDataSource(target);
    renderer.setScene(exportScene(static_cast<int>(state.range(0))));
    renderer.setAntialiasing(antialiasing(state.range(1)));
    renderer.render();  // pipelines, uploads
    glFinish();
    double cpuTotal = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        double startCPU = processCPUSeconds();
        renderer.render();
        glFinish();
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        cpuTotal += processCPUSeconds() - startCPU;
    }
    state.counters["cpu_ms_per_frame"] = benchmark::Counter(cpuTotal * 1000, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_DrawFrame)
    ->ArgNames({"layers", "analytic"})
    ->ArgsProduct({{0, kBackground, kVideo, kArtwork, kAll, kFlatVideo}, {1, 0}})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
}  // namespace

BENCHMARK_MAIN();

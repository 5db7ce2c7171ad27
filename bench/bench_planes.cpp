#include <benchmark/benchmark.h>

#include "core/scene/FLKProjectiveVertexGridSolver.h"
#include "core/scene/FLKPlane.h"

// A corner drag as the editor does it: each step asks for a new grid-128
// plane with the bottom-right corner moved (bounds, perspective vertices,
// indices) and drops the previous one.
static void BM_PerspectiveRebuildGrid128(benchmark::State& state) {
    std::shared_ptr<FLKPlane> plane = FLKPlane::planeWithFrame(FLKRect(0, 0, 1080, 1920));
    double step = 0;
    for (auto _ : state) {
        step = step > 100 ? 0 : step + 0.5;
        plane = plane->shapeBySettingPoint({1080 + step, 1920 - step}, 2);
        benchmark::DoNotOptimize(plane->vertices());
    }
}
BENCHMARK(BM_PerspectiveRebuildGrid128)->Unit(benchmark::kMicrosecond);

// Moving the whole plane keeps it a parallelogram: the bilinear grid.
static void BM_BilinearRebuildGrid128(benchmark::State& state) {
    FLKPlane plane(FLKRect(0, 0, 1080, 1920));
    double step = 0;
    for (auto _ : state) {
        step = step > 100 ? 0 : step + 0.5;
        plane.setTopLeft({step, 0}, {1080 + step, 0}, {step, 1920}, {1080 + step, 1920});
        benchmark::DoNotOptimize(plane.vertices());
    }
}
BENCHMARK(BM_BilinearRebuildGrid128)->Unit(benchmark::kMicrosecond);

// The perspective solver alone, without bounds and indices.
static void BM_PerspectiveSolverGrid128(benchmark::State& state) {
    for (auto _ : state) {
        FLKPerspectiveVertexGridSolver solver({0, 0}, {20, 1900}, {1100, 1930}, {1080, 10}, 128);
        solver.solve();
        benchmark::DoNotOptimize(solver.vertices());
    }
}
BENCHMARK(BM_PerspectiveSolverGrid128)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();

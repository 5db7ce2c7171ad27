flk_add_bench(bench_planes LAYERS flk_scene SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_planes.cpp)

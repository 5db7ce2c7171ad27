flk_add_bench(bench_render LAYERS flk_render SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_render.cpp)

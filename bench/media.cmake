flk_add_bench(bench_decode LAYERS flk_media SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_decode.cpp)

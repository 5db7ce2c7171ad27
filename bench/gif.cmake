flk_add_bench(bench_gif LAYERS flk_exporter SOURCES ${CMAKE_CURRENT_LIST_DIR}/bench_gif.cpp LIBS GIF::GIF)
target_include_directories(bench_gif PRIVATE ${CMAKE_SOURCE_DIR}/tests)

add_executable(bench_capture_x11 ${CMAKE_CURRENT_LIST_DIR}/bench_capture_x11.cpp)
target_include_directories(bench_capture_x11 PRIVATE ${CMAKE_SOURCE_DIR}/src)
flk_link_layers(bench_capture_x11 flk_scene)

# The desktop program's window playing a document (bench/app_playback.sh).
add_executable(bench_app_playback ${CMAKE_CURRENT_LIST_DIR}/bench_app_playback.cpp)
target_link_libraries(bench_app_playback PRIVATE flk_app)
add_dependencies(bench_app_playback flk_content)
set_target_properties(bench_app_playback PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

if(TARGET flickwell-cli)
  flk_add_test(test_cli_capture LAYERS flk_capture SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKCaptureCommandsTests.cpp)
  target_compile_definitions(test_cli_capture PRIVATE FLK_CLI_PATH="$<TARGET_FILE:flickwell-cli>"
    FLK_ADB_STANDIN="${CMAKE_SOURCE_DIR}/tests/core/capture/adb-standin.sh")
  add_dependencies(test_cli_capture flickwell-cli)
endif()

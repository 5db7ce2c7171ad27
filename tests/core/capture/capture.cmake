# Parsers, the finder in virtual time and the recorder's rules: no device needed.
flk_add_test(test_capture LAYERS flk_capture SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKCaptureParsingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKDeviceFinderTests.cpp)

# Real capture: a stand-in adb streaming H.264, and x11grab on a virtual X display.
flk_add_test(test_capture_live LAYERS flk_scene SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKCaptureTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKAdbCaptureTests.cpp)
target_compile_definitions(test_capture_live PRIVATE FLK_ADB_STANDIN="${CMAKE_CURRENT_LIST_DIR}/adb-standin.sh")

# x11grab on a virtual display of its own with one 640 by 480 monitor.
find_program(FLK_XVFB_RUN_CAPTURE xvfb-run REQUIRED)
add_executable(test_capture_display ${CMAKE_CURRENT_LIST_DIR}/FLKCaptureTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKScreenCaptureTests.cpp $<TARGET_OBJECTS:flk_testmain>)
flk_use_test_pch(test_capture_display)
target_include_directories(test_capture_display PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests)
flk_link_layers(test_capture_display flk_capture)
target_link_libraries(test_capture_display PRIVATE GTest::gtest GTest::gmock)
# -noreset: a server that resets when its last client leaves refuses the next
# test's connection for a moment (about one run in twelve on a busy machine).
add_test(NAME test_capture_display COMMAND ${FLK_XVFB_RUN_CAPTURE} -a -s "-screen 0 640x480x24 -noreset"
         $<TARGET_FILE:test_capture_display>)
# xvfb-run -a picks a free display racily: one virtual display at a time.
set_tests_properties(test_capture_display PROPERTIES TIMEOUT 300 RESOURCE_LOCK virtual_display)
flk_mark_tsan(test_capture)
flk_mark_tsan(test_capture_live)

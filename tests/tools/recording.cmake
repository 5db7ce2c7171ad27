if(TARGET flk-make-recording)
  flk_add_test(test_recording_tool LAYERS flk_media SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKRecordingToolTests.cpp)
  target_compile_definitions(test_recording_tool PRIVATE FLK_RECORDING_TOOL_PATH="$<TARGET_FILE:flk-make-recording>"
                                                         FLK_TUTORIAL_VIDEO_PATH="${CMAKE_BINARY_DIR}/share/flickwell/tutorial_1.mp4")
  add_dependencies(test_recording_tool flk-make-recording flk_tutorial)

  flk_add_test(test_recording_art LAYERS flk_media SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKRecordingArtTests.cpp)
  target_link_libraries(test_recording_art PRIVATE flk_recording_art)
endif()

flk_add_test(test_timeline LAYERS flk_timeline SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineClipTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineTrackTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineTests.cpp)
flk_mark_tsan(test_timeline)

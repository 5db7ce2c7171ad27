flk_add_test(test_timeline LAYERS flk_timeline SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineClipTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineTrackTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineTests.cpp)
flk_mark_tsan(test_timeline)
flk_add_test(test_timeline_playback LAYERS flk_timeline SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/../media/FLKMediaTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelinePlaybackTests.cpp)
set_property(TEST test_timeline_playback APPEND PROPERTY ENVIRONMENT LP_NUM_THREADS=0)
flk_mark_tsan(test_timeline_playback)

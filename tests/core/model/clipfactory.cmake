flk_add_test(test_clip_factory LAYERS flk_model SOURCES
  ${CMAKE_SOURCE_DIR}/tests/core/media/FLKMediaTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineClipFactoryTests.cpp)

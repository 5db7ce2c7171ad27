flk_add_test(test_buffers LAYERS flk_timeline SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/../media/FLKMediaTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKVideoBufferSampleReaderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelineBufferManagerTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKURLVideoTextureProviderTests.cpp)
# llvmpipe's own worker threads synchronise in ways ThreadSanitizer cannot see.
set_property(TEST test_buffers APPEND PROPERTY ENVIRONMENT LP_NUM_THREADS=0)
flk_mark_tsan(test_buffers)

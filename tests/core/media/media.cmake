flk_add_test(test_media LAYERS flk_media SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKMediaTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKAssetTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKAssetReaderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKFrameScalerTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKVideoEncoderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKAudioMuxerTests.cpp)
flk_mark_tsan(test_media)

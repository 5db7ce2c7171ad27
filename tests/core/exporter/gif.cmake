flk_add_test(test_gif LAYERS flk_exporter SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKGIFRecorderTests.cpp
  LIBS GIF::GIF)
flk_mark_tsan(test_gif)

flk_add_test(test_editing LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKActionPipelineTests.cpp)

flk_add_test(test_platform LAYERS flk_platform SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKGeometryTests.cpp ${CMAKE_CURRENT_LIST_DIR}/FLKSerializationTests.cpp)

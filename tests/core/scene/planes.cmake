flk_add_test(test_planes LAYERS flk_scene SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKPlaneTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKVertexGridTests.cpp)
flk_mark_tsan(test_planes)

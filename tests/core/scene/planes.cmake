# Plane sources are listed directly so these tests build without the rest of the scene layer.
set(FLK_PLANE_SOURCES
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKPlane.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKQuad.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKVertexGridSolver.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKPerspectiveVertexGridSolver.cpp)
flk_add_test(test_planes LAYERS flk_platform SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKPlaneTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKVertexGridTests.cpp
  ${FLK_PLANE_SOURCES})
flk_mark_tsan(test_planes)

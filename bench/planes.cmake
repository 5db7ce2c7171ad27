flk_add_bench(bench_planes LAYERS flk_platform SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/bench_planes.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKPlane.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKQuad.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKVertexGridSolver.cpp
  ${CMAKE_SOURCE_DIR}/src/core/scene/FLKPerspectiveVertexGridSolver.cpp)

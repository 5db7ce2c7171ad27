flk_add_test(test_scene LAYERS flk_scene SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKObjectTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKCameraTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKSceneNodesTests.cpp)

flk_add_test(test_scene_threads LAYERS flk_scene SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKSceneThreadTests.cpp)
flk_mark_tsan(test_scene_threads)

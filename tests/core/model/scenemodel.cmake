flk_add_test(test_scene_model LAYERS flk_model SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKSceneModelTests.cpp)

# The audio output calls back on its own thread.
flk_add_test(test_scene_sound LAYERS flk_model SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKSceneSoundTests.cpp)
flk_mark_tsan(test_scene_sound)

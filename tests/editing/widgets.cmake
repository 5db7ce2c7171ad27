flk_add_test(test_widgets LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKSelectionEditingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKVertexEditingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKSceneViewActionsNotifierTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKEditingSupportTests.cpp)

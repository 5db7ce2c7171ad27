flk_add_test(test_timeline_panel LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelinePanelLayoutTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimelinePanelEditingTests.cpp)

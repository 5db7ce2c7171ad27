flk_add_test(test_recording_panel LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKRecordingDevicesTests.cpp)
flk_add_test(test_recording_panel_rules LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKRecordingPanelTests.cpp)

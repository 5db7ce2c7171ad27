flk_add_test(test_recording_inspector LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKRecordingDevicesTests.cpp)
flk_add_test(test_recording_inspector_rules LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKRecordingInspectorTests.cpp)

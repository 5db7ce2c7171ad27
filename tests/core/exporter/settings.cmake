flk_add_test(test_export_settings LAYERS flk_exporter SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKExportSettingsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKVideoSizeTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKFrameCalculatorTests.cpp)
target_compile_definitions(test_export_settings PRIVATE
  FLK_SOURCE_RESOURCES_DIR="${CMAKE_SOURCE_DIR}/resources")

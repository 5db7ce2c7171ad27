flk_add_test(test_export LAYERS flk_exporter SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKVideoRecorderTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKExportOperationTests.cpp)
flk_mark_tsan(test_export)
# Exports render through Mesa, whose threads ThreadSanitizer cannot follow.
set_property(TEST test_export APPEND PROPERTY ENVIRONMENT
  "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/core/render/tsan.supp")

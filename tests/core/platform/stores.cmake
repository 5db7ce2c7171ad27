flk_add_test(test_platform_stores LAYERS flk_platform SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKStoreTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKFolderLeaseTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKUserDefaultsTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKPerformanceSettingsTests.cpp)
flk_mark_tsan(test_platform_stores)

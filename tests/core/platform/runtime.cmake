flk_add_test(test_platform_runtime LAYERS flk_platform SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKQueueRuntimeTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTimerRuntimeTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKNotificationRuntimeTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKClockTests.cpp)
flk_mark_tsan(test_platform_runtime)

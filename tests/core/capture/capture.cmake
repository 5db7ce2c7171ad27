# Parsers, the finder in virtual time and the recorder's rules: no device needed.
flk_add_test(test_capture LAYERS flk_capture SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKCaptureParsingTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKDeviceFinderTests.cpp)

flk_add_test(test_filters LAYERS flk_gpu SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKImageFilterTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKBiplanarConverterFilterTests.cpp
  LIBS PkgConfig::EPOXY)

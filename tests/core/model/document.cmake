flk_add_test(test_document LAYERS flk_model LIBS PkgConfig::LIBZIP SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKDocumentTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKDocumentSafetyTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKMasksManagerTests.cpp)
flk_add_test(test_templates LAYERS flk_model SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKTemplateManagerTests.cpp)

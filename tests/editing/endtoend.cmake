flk_add_test(test_editing_end_to_end LAYERS flickwell_editing SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKEditingEndToEndTests.cpp)
# Loads a built-in template, drawn at build time.
add_dependencies(test_editing_end_to_end flk_content)
target_compile_definitions(test_editing_end_to_end PRIVATE
  FLK_TEST_RESOURCES="${CMAKE_BINARY_DIR}/share/flickwell")

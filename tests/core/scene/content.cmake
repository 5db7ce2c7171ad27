# Runs the content generator (tools/) and reads what it wrote back through the scene classes.
if(TARGET flk-make-content)
  flk_add_test(test_content LAYERS flk_scene SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKContentTests.cpp)
  target_compile_definitions(test_content PRIVATE FLK_MAKE_CONTENT="$<TARGET_FILE:flk-make-content>")
  add_dependencies(test_content flk-make-content)
endif()

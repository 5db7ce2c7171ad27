if(TARGET flickwell-cli)
  flk_add_test(test_cli_commands LAYERS flk_media SOURCES ${CMAKE_CURRENT_LIST_DIR}/FLKDocumentCommandsTests.cpp
               TIMEOUT 600)
  target_compile_definitions(test_cli_commands PRIVATE FLK_CLI_PATH="$<TARGET_FILE:flickwell-cli>")
  add_dependencies(test_cli_commands flickwell-cli)
endif()

# The desktop program as it runs: a real window on a virtual X display, real
# GL (llvmpipe), real mouse and key events.
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
find_program(FLK_XVFB_RUN xvfb-run REQUIRED)
add_executable(test_app ${CMAKE_CURRENT_LIST_DIR}/FLKAppTests.cpp)
set_target_properties(test_app PROPERTIES AUTOMOC ON)
target_link_libraries(test_app PRIVATE flk_app Qt6::Test)
add_dependencies(test_app flk_content)
target_compile_definitions(test_app PRIVATE FLK_TEST_ARTIFACTS="${CMAKE_SOURCE_DIR}/build/test-artifacts"
  FLK_TEST_RESOURCES="${CMAKE_BINARY_DIR}/share/flickwell")
add_test(NAME test_app COMMAND ${FLK_XVFB_RUN} -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:test_app>)
# EGL picks its platform from Qt's display here; LeakSanitizer ignores only
# what Mesa, Qt and fontconfig keep until exit.
set_tests_properties(test_app PROPERTIES TIMEOUT 300 ENVIRONMENT
  "FLICKWELL_RESOURCES=${CMAKE_BINARY_DIR}/share/flickwell;QT_QPA_PLATFORM=xcb;SDL_AUDIODRIVER=dummy;LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_LIST_DIR}/lsan-third-party.supp:print_suppressions=0")

# Documents, menus, drops, hand-over between starts and autosave; runs the
# built program itself for the crash-recovery case.
add_executable(test_app_documents ${CMAKE_CURRENT_LIST_DIR}/FLKDocumentTests.cpp)
set_target_properties(test_app_documents PROPERTIES AUTOMOC ON)
target_link_libraries(test_app_documents PRIVATE flk_app Qt6::Test)
add_dependencies(test_app_documents flk_content flickwell)
target_compile_definitions(test_app_documents PRIVATE FLK_TEST_RESOURCES="${CMAKE_BINARY_DIR}/share/flickwell"
  FLK_PROGRAM="$<TARGET_FILE:flickwell>")
add_test(NAME test_app_documents COMMAND ${FLK_XVFB_RUN} -a -s "-screen 0 1280x1024x24" $<TARGET_FILE:test_app_documents>)
set_tests_properties(test_app_documents PROPERTIES TIMEOUT 600 ENVIRONMENT
  "FLICKWELL_RESOURCES=${CMAKE_BINARY_DIR}/share/flickwell;QT_QPA_PLATFORM=xcb;SDL_AUDIODRIVER=dummy;LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_LIST_DIR}/lsan-third-party.supp:print_suppressions=0")

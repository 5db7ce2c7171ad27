# The desktop program as it runs: a real window on a virtual X display, real
# GL (llvmpipe), real mouse and key events.
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
find_program(FLK_XVFB_RUN xvfb-run REQUIRED)

function(flk_add_app_test name source)
  add_executable(${name} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${source})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE flk_app Qt6::Test)
  add_dependencies(${name} flk_content)
  target_compile_definitions(${name} PRIVATE FLK_TEST_ARTIFACTS="${CMAKE_SOURCE_DIR}/build/test-artifacts"
    FLK_TEST_RESOURCES="${CMAKE_BINARY_DIR}/share/flickwell")
  add_test(NAME ${name} COMMAND ${FLK_XVFB_RUN} -a -s "-screen 0 1280x1024x24 -noreset" $<TARGET_FILE:${name}>)
  # EGL picks its platform from Qt's display here; LeakSanitizer ignores only
  # what Mesa, Qt and fontconfig keep until exit.
  # xvfb-run -a picks a free display racily: one virtual display at a time.
  # GCC 12's LeakSanitizer reads a stale dynamic-TLS slot of a library unloaded
  # before exit and crashes its tracer (about one run in two of the Record page
  # test); without the __tls_get_addr hook it finds dynamic TLS through the heap.
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 RESOURCE_LOCK virtual_display ENVIRONMENT
    "FLICKWELL_RESOURCES=${CMAKE_BINARY_DIR}/share/flickwell;QT_QPA_PLATFORM=xcb;SDL_AUDIODRIVER=dummy;ASAN_OPTIONS=intercept_tls_get_addr=0;LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_FUNCTION_LIST_DIR}/lsan-third-party.supp:print_suppressions=0")
endfunction()

flk_add_app_test(test_app FLKAppTests.cpp)
# On llvmpipe the canvas reads its frames back; the same tests again with the
# canvas shown through OpenGL, as on a GPU.
add_test(NAME test_app_gl_canvas COMMAND ${FLK_XVFB_RUN} -a -s "-screen 0 1280x1024x24 -noreset" $<TARGET_FILE:test_app>)
get_test_property(test_app ENVIRONMENT FLK_APP_TEST_ENVIRONMENT)
set_tests_properties(test_app_gl_canvas PROPERTIES TIMEOUT 300 RESOURCE_LOCK virtual_display ENVIRONMENT
  "${FLK_APP_TEST_ENVIRONMENT};FLK_TEST_CANVAS_PRESENTATION=openGL")
# Start-up: fresh installs, the launch sequence and the welcome screen.
flk_add_app_test(test_app_startup FLKStartupTests.cpp)
# It also runs the program itself on a driver without OpenGL 4.5, and closes
# its alert through the X server.
add_dependencies(test_app_startup flickwell)
target_compile_definitions(test_app_startup PRIVATE FLK_PROGRAM="$<TARGET_FILE:flickwell>")
target_link_libraries(test_app_startup PRIVATE xcb)
# The timeline panel under the canvas.
flk_add_app_test(test_app_timeline_panel FLKTimelinePanelTests.cpp)
# Documents, menus, drops, hand-over between starts and autosave; runs the
# built program itself for the crash-recovery case.
flk_add_app_test(test_app_documents FLKDocumentTests.cpp)
add_dependencies(test_app_documents flickwell)
target_compile_definitions(test_app_documents PRIVATE FLK_PROGRAM="$<TARGET_FILE:flickwell>")
set_tests_properties(test_app_documents PROPERTIES TIMEOUT 600)
# The inspector panel and its pages, and the welcome window's documents.
flk_add_app_test(test_app_side_panel FLKSidePanelTests.cpp)
# The export page and Preferences; reads the exports back with ffprobe.
flk_add_app_test(test_app_export FLKExportPageTests.cpp)
set_tests_properties(test_app_export PROPERTIES TIMEOUT 900)
# The record page with a stand-in adb phone: live picture, a kept recording, an unplug.
flk_add_app_test(test_app_record FLKRecordPageTests.cpp)
target_compile_definitions(test_app_record PRIVATE
  FLK_ADB_STANDIN="${CMAKE_SOURCE_DIR}/tests/core/capture/adb-standin.sh")

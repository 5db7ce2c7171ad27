# Each layer is an OBJECT library so that every translation unit (and with it
# every self-registering serialisable class) ends up in the programs that use
# the layer. Object files do not travel transitively, so the closure of a
# layer's dependencies is recorded and linked explicitly by flk_link_layers().

function(flk_add_layer name)
  cmake_parse_arguments(ARG "" "" "DEPS;LIBS;SOURCES" ${ARGN})
  file(GLOB_RECURSE globbed CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT globbed AND NOT ARG_SOURCES)
    # A layer still being written: keep the target so programs can name it.
    set(empty ${CMAKE_CURRENT_BINARY_DIR}/${name}_empty.cpp)
    file(WRITE ${empty} "")
    list(APPEND globbed ${empty})
  endif()
  add_library(${name} OBJECT ${globbed} ${ARG_SOURCES})
  flk_use_core_pch(${name})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_DEPS} ${ARG_LIBS})
  set(closure ${name})
  foreach(dep IN LISTS ARG_DEPS)
    get_property(dep_closure GLOBAL PROPERTY FLK_CLOSURE_${dep})
    list(APPEND closure ${dep_closure})
  endforeach()
  list(REMOVE_DUPLICATES closure)
  set_property(GLOBAL PROPERTY FLK_CLOSURE_${name} ${closure})
endfunction()

# Links a program against a layer and every layer below it.
function(flk_link_layers target)
  set(all)
  foreach(layer IN LISTS ARGN)
    get_property(closure GLOBAL PROPERTY FLK_CLOSURE_${layer})
    if(NOT closure)
      message(FATAL_ERROR "unknown layer ${layer}")
    endif()
    list(APPEND all ${closure})
  endforeach()
  list(REMOVE_DUPLICATES all)
  target_link_libraries(${target} PRIVATE ${all})
endfunction()

# A GoogleTest program over the given layers, run by CTest with a fresh
# FLICKWELL_HOME (made by the shared test main) and no sound card or display.
function(flk_add_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "LAYERS;SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES} $<TARGET_OBJECTS:flk_testmain>)
  flk_use_test_pch(${name})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests)
  flk_link_layers(${name} ${ARG_LAYERS})
  target_link_libraries(${name} PRIVATE GTest::gtest GTest::gmock ${ARG_LIBS})
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 600)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "SDL_AUDIODRIVER=dummy;EGL_PLATFORM=surfaceless;FLICKWELL_RESOURCES=${CMAKE_BINARY_DIR}/share/flickwell;OMP_WAIT_POLICY=passive")
endfunction()

# Tests marked TSAN also run in the ThreadSanitizer job (make test-tsan).
add_custom_target(flk_tsan_tests)
function(flk_mark_tsan name)
  set_property(TEST ${name} APPEND PROPERTY LABELS tsan)
  add_dependencies(flk_tsan_tests ${name})
endfunction()

# Test and benchmark folders are split into one *.cmake file per area so that
# people working on different areas never edit the same build file.
function(flk_include_parts dir)
  file(GLOB parts CONFIGURE_DEPENDS ${dir}/*.cmake)
  list(SORT parts)
  foreach(part IN LISTS parts)
    include(${part})
  endforeach()
endfunction()

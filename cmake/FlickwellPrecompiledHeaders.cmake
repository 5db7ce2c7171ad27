# Most of a translation unit's compile time here is spent parsing the same
# standard and JSON headers; each layer and each test program reuses one
# precompiled copy of them. Programs built with other options (the -O2 tools)
# keep plain includes.
set(FLK_PCH_HEADERS
  <algorithm> <array> <atomic> <chrono> <cmath> <condition_variable> <cstdint> <cstring>
  <deque> <filesystem> <functional> <map> <memory> <mutex> <optional> <set> <sstream>
  <string> <thread> <unordered_map> <utility> <variant> <vector>
  <nlohmann/json.hpp>)

if(FLK_PCH)
  file(WRITE ${CMAKE_BINARY_DIR}/flk_pch.cpp "")
  add_library(flk_pch_core OBJECT ${CMAKE_BINARY_DIR}/flk_pch.cpp)
  target_link_libraries(flk_pch_core PRIVATE nlohmann_json::nlohmann_json)
  target_precompile_headers(flk_pch_core PRIVATE ${FLK_PCH_HEADERS})
endif()

function(flk_use_core_pch target)
  if(FLK_PCH)
    target_precompile_headers(${target} REUSE_FROM flk_pch_core)
  endif()
endfunction()

# The test programs share one more, with GoogleTest, made by the shared test main.
function(flk_add_test_pch target)
  if(FLK_PCH)
    target_precompile_headers(${target} PRIVATE ${FLK_PCH_HEADERS} <gtest/gtest.h> <gmock/gmock.h>)
  endif()
endfunction()

function(flk_use_test_pch target)
  if(FLK_PCH)
    target_precompile_headers(${target} REUSE_FROM flk_testmain)
  endif()
endfunction()

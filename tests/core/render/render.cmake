flk_add_test(test_render LAYERS flk_render SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKRenderTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKRendererTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKOffScreenRendererTests.cpp)
flk_mark_tsan(test_render)
set_property(TEST test_render APPEND PROPERTY ENVIRONMENT "TSAN_OPTIONS=suppressions=${CMAKE_CURRENT_LIST_DIR}/tsan.supp")

# Single-threaded pixel comparisons; their many shader compilations overflow
# ThreadSanitizer's table of held locks inside the uninstrumented rasteriser.
flk_add_test(test_render_coverage LAYERS flk_render SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKRenderTestSupport.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKAnalyticCoverageTests.cpp)

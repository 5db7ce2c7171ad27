flk_add_test(test_gpu LAYERS flk_gpu SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKContextTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKTextureTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKRenderPipelineTests.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FLKImageIOTests.cpp
  LIBS PkgConfig::EPOXY)

flk_add_test(test_gpu_threads LAYERS flk_gpu SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKContextThreadTests.cpp
  LIBS PkgConfig::EPOXY)

# llvmpipe's own worker threads synchronise in ways ThreadSanitizer cannot see;
# rasterising on the calling thread keeps its reports to our code.
set_property(TEST test_gpu test_gpu_threads APPEND PROPERTY ENVIRONMENT LP_NUM_THREADS=0)
flk_mark_tsan(test_gpu)
flk_mark_tsan(test_gpu_threads)

# The display is chosen once per process, so this needs a program of its own.
flk_add_test(test_gpu_native_platform LAYERS flk_gpu SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKContextNativePlatformTests.cpp
  LIBS PkgConfig::EPOXY PkgConfig::EGL)

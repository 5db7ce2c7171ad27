# The animators are compiled in directly so that this program does not depend
# on the rest of the timeline layer.
flk_add_test(test_animators LAYERS flk_platform SOURCES
  ${CMAKE_CURRENT_LIST_DIR}/FLKAnimatorTests.cpp
  ${CMAKE_SOURCE_DIR}/src/core/timeline/FLKAnimator.cpp
  ${CMAKE_SOURCE_DIR}/src/core/timeline/FLKRectAnimator.cpp
  ${CMAKE_SOURCE_DIR}/src/core/timeline/FLKPointAnimator.cpp
  ${CMAKE_SOURCE_DIR}/src/core/timeline/FLKColorAnimator.cpp
  ${CMAKE_SOURCE_DIR}/src/core/timeline/FLKColorArrayAnimator.cpp)
flk_mark_tsan(test_animators)

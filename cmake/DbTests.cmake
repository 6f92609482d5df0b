# db_add_test(NAME source...): one GoogleTest program whose cases are each a
# CTest test of their own, so that ctest -j spreads them over the cores.
function(db_add_test name)
  if(NOT DB_TESTS)
    return()
  endif()
  add_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  target_link_libraries(${name} PRIVATE db_tool db_testing GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 ENVIRONMENT "TZ=UTC")
endfunction()

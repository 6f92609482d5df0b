# db_add_test(NAME source... [LIBS library...]): one GoogleTest program whose
# cases are each a CTest test of their own, so that ctest -j spreads them over
# the cores. LIBS are linked besides the tool and the test helpers.
#
# End-to-end test programs (named *_e2e_test*) run db in the recorder sandbox,
# which needs the host's namespaces and native programs; a cross build turns
# DB_E2E_TESTS off to build and run the unit tests alone. Their targets still
# exist, out of the default build and of ctest, so that folders can link to
# them as usual.
option(DB_E2E_TESTS "Build and register the end-to-end tests (they need the recorder sandbox)" ON)

# Every unit test program, so that a quick check builds them without the
# end-to-end programs: cmake --build build -t unit_tests.
if(DB_TESTS)
  add_custom_target(unit_tests)
endif()

function(db_add_test name)
  if(NOT DB_TESTS)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS")
  set(registered YES)
  if(NOT DB_E2E_TESTS AND name MATCHES "_e2e_test")
    set(registered NO)
  endif()
  if(registered)
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  else()
    add_executable(${name} EXCLUDE_FROM_ALL ${arg_UNPARSED_ARGUMENTS})
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  target_link_libraries(${name} PRIVATE db_tool db_testing ${arg_LIBS} GTest::gtest GTest::gtest_main)
  if(registered)
    # The label lets a run take the end-to-end tests alone: tools/ci/armhf
    # runs them against the ARM build of db.
    set(labels unit)
    if(NOT name MATCHES "_e2e_test")
      add_dependencies(unit_tests ${name})
    endif()
    if(name MATCHES "_e2e_test")
      set(labels e2e)
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
                         PROPERTIES TIMEOUT 120 ENVIRONMENT "TZ=UTC" LABELS ${labels})
  endif()
endfunction()

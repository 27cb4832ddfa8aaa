# The header that every unit test includes, compiled once for all of them.
find_package(GTest REQUIRED)
add_library(test_headers OBJECT ${PROJECT_SOURCE_DIR}/tests/support/test_headers.cpp)
target_link_libraries(test_headers PRIVATE stp_warnings GTest::gmock)
target_precompile_headers(test_headers PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/test_headers.h)
# A precompiled header serves only what is compiled as it was: this one serves programs.
set_target_properties(test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(test_headers PRIVATE -fPIE)

# Tests' own code is compiled for invalid accesses only, without the checks of undefined behaviour and of variables
# whose block has ended, which are a third of its compile time. What they test keeps both, but for a few files (LibraryTemplates.cmake).
if(STPSNMP_SANITIZE)
  set(unit_test_options -fno-sanitize=undefined -fno-sanitize-address-use-after-scope)
endif()
target_compile_options(test_headers PRIVATE ${unit_test_options})

# add_unit_tests(<program> LABELS <label>... [SHARDS <number>] [FIXTURES_REQUIRED <fixture>...])
#
# Runs a GoogleTest program as one test, or, a long one, as several that share its tests between them.
function(add_unit_tests program)
  cmake_parse_arguments(PARSE_ARGV 1 unit "" "SHARDS" "LABELS;FIXTURES_REQUIRED")
  target_compile_options(${program} PRIVATE ${unit_test_options})
  target_precompile_headers(${program} REUSE_FROM test_headers)
  if(NOT unit_SHARDS)
    set(unit_SHARDS 1)
  endif()
  math(EXPR last "${unit_SHARDS} - 1")
  foreach(shard RANGE ${last})
    set(name ${program})
    if(unit_SHARDS GREATER 1)
      string(APPEND name ".${shard}")
    endif()
    add_test(NAME ${name} COMMAND ${program})
    set_tests_properties(${name} PROPERTIES
      LABELS "${unit_LABELS}" TIMEOUT 1500 COST 1 FIXTURES_REQUIRED "${unit_FIXTURES_REQUIRED}"
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${unit_SHARDS};GTEST_SHARD_INDEX=${shard}")
  endforeach()
endfunction()

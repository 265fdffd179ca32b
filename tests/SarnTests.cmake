# SPDX-License-Identifier: Apache-2.0
# Functions that define test programs.
set(sarn_tests_dir "${CMAKE_CURRENT_LIST_DIR}")
set(sarn_expect_output "${CMAKE_CURRENT_LIST_DIR}/support/expect_output.cmake")
if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
endif()

# The iterations run before a release. data/lane_exceptions.txt has the reasons for leaving out the others.
set(sarn_test_filter "-*Of16777216Iterations*")
if(CMAKE_CROSSCOMPILING_EMULATOR AND NOT WIN32)
  string(APPEND sarn_test_filter ":RandomReserve.*:SecretsSearch.SecretInMemory_*")
endif()

# Applies the compile options of all test programs.
function(sarn_configure_test_target target)
  sarn_configure_target(${target})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  if(NOT MSVC)
    # Optimisation would take longer than it saves. The libraries are optimised.
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O0>)
    # Programs share a precompiled header, so they share its options. Clang 14 declares the sized operator delete, which
    # some tests replace, on request only.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:Clang>:-fsized-deallocation>)
    # A row of a table does not repeat the braces of its base.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:Clang>:-Wno-missing-braces>)
  endif()
endfunction()

# Adds a test program. CTest runs each of its tests in a process of its own, but the program as a whole in a build with
# sanitizers, whose processes start slowly.
function(sarn_add_tests name)
  add_executable(${name} ${ARGN})
  sarn_configure_test_target(${name})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  # GoogleTest's header takes longer to compile than most tests.
  sarn_compile_fast(${name} ul_tests <gtest/gtest.h>)
  sarn_expect_lost_contexts(${name})
  if(SARN_SANITIZERS)
    add_test(NAME ${name} COMMAND ${name} --gtest_shuffle "--gtest_filter=${sarn_test_filter}")
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 TEST_FILTER "${sarn_test_filter}")
  endif()
endfunction()

# Suppresses the one leak that is part of the contract.
function(sarn_expect_lost_contexts target)
  if(SARN_SANITIZERS MATCHES "address" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/support/lost_contexts.cpp")
    target_link_libraries(${target} PRIVATE OpenSSL::Crypto ${CMAKE_DL_LIBS})
  endif()
endfunction()

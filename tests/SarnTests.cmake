# SPDX-License-Identifier: Apache-2.0
# Functions that define test programs and find their tests.
set(sarn_tests_dir "${CMAKE_CURRENT_LIST_DIR}")
set(sarn_expect_output "${CMAKE_CURRENT_LIST_DIR}/support/expect_output.cmake")
if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
  # All programs go into one folder.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
endif()

# Applies the compile options of all test programs.
function(sarn_configure_test_target target)
  sarn_configure_target(${target})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  if(NOT MSVC)
    # Optimising the tests, which run only briefly, would take longer than running them. The libraries are optimised.
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
endfunction()

# Adds a test program, with a CTest entry and a process for each of its tests.
function(sarn_add_tests name)
  add_executable(${name} ${ARGN})
  sarn_configure_test_target(${name})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  if(NOT CMAKE_CXX_COMPILER_LAUNCHER AND NOT CMAKE_CROSSCOMPILING)
    # A precompiled header, because GoogleTest's header takes longer to read than most tests. Not with a compiler cache,
    # which works better without, and not with the cross compiler, which then warns about its own headers.
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h>)
  endif()
  sarn_expect_lost_contexts(${name})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# Suppresses the one leak that is part of the contract in a program that uses the library.
function(sarn_expect_lost_contexts target)
  if(SARN_SANITIZERS MATCHES "address" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/support/lost_contexts.cpp")
    target_link_libraries(${target} PRIVATE OpenSSL::Crypto ${CMAKE_DL_LIBS})
  endif()
endfunction()

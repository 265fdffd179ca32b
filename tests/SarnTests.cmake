# SPDX-License-Identifier: Apache-2.0
# How the programs of the tests are built and their tests found.
set(sarn_tests_dir "${CMAKE_CURRENT_LIST_DIR}")
set(sarn_expect_output "${CMAKE_CURRENT_LIST_DIR}/support/expect_output.cmake")
if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
  # All programs in one folder, whatever the folder of their sources.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
endif()

# Applies what every program of the tests is compiled with.
function(sarn_configure_test_target target)
  sarn_configure_target(${target})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  if(NOT MSVC)
    # Optimising tests, which run for moments, takes longer than running them. The libraries are as they ship.
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
endfunction()

# Adds a test program and a CTest entry for each of its tests. Each test runs in a process of its own.
function(sarn_add_tests name)
  add_executable(${name} ${ARGN})
  sarn_configure_test_target(${name})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
  if(NOT CMAKE_CXX_COMPILER_LAUNCHER AND NOT CMAKE_CROSSCOMPILING)
    # It takes longer to read than most tests. A compiler cache, where there is one, does better without, and the cross
    # compiler warns of its own headers when they were compiled before.
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h>)
  endif()
  sarn_expect_lost_contexts(${name})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# Keeps the leak sanitizer from reporting the one leak that is meant to be, in a program that uses the library.
function(sarn_expect_lost_contexts target)
  if(SARN_SANITIZERS MATCHES "address" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/support/lost_contexts.cpp")
    target_link_libraries(${target} PRIVATE OpenSSL::Crypto ${CMAKE_DL_LIBS})
  endif()
endfunction()

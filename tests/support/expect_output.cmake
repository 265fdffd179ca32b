# SPDX-License-Identifier: Apache-2.0
# Runs a program, which must end with the right status and print what matches; CTest's own PASS_REGULAR_EXPRESSION would
# not ask for the status.
# Wants: OUTPUT (a regular expression), STATUS (0 unless given); the command and its arguments follow "--"
if(NOT DEFINED STATUS)
  set(STATUS 0)
endif()
set(command "")
set(is_command FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(index RANGE ${last})
  if(is_command)
    list(APPEND command "${CMAKE_ARGV${index}}")
  elseif(CMAKE_ARGV${index} STREQUAL "--")
    set(is_command TRUE)
  endif()
endforeach()
execute_process(COMMAND ${command} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status EQUAL STATUS)
  message(FATAL_ERROR "status ${status}, expected ${STATUS}:\n${output}${errors}")
endif()
if(NOT "${output}${errors}" MATCHES "${OUTPUT}")
  message(FATAL_ERROR "unexpected output:\n${output}${errors}")
endif()

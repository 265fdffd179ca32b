# SPDX-License-Identifier: Apache-2.0
# Included by the scripts of this folder, which run examples as a user would, in a folder of their own.
# Arguments: BIN (the folder of the programs), SUFFIX (.exe or empty), WORK_DIR; EMULATOR for another system
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")

# Runs a program, which must end with `status`. Sets `output` and `errors`.
function(run status program)
  execute_process(COMMAND ${EMULATOR} "${BIN}/${program}${SUFFIX}" ${ARGN}
    WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE actual OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT actual STREQUAL "${status}")
    message(FATAL_ERROR "${program} ${ARGN} ended with ${actual} instead of ${status}:\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
  set(errors "${errors}" PARENT_SCOPE)
endfunction()

# Runs another program, which must succeed.
function(run_tool)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK_DIR}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(expect text pattern)
  if(NOT text MATCHES "${pattern}")
    message(FATAL_ERROR "${text}\ndoes not match ${pattern}")
  endif()
endfunction()

function(expect_content name content)
  file(READ "${WORK_DIR}/${name}" actual)
  if(NOT actual STREQUAL content)
    message(FATAL_ERROR "${name} has another content")
  endif()
endfunction()

function(expect_none)
  foreach(name IN LISTS ARGN)
    if(EXISTS "${WORK_DIR}/${name}")
      message(FATAL_ERROR "${name} is there")
    endif()
  endforeach()
endfunction()

# SPDX-License-Identifier: Apache-2.0
# Encrypts files around the size of a piece, decrypts them, and expects that changed and cut ones are refused.
# Wants: PROGRAM, WORK_DIR; EMULATOR if they are for another system
set(PROGRAM ${EMULATOR} "${PROGRAM}")
function(run expected_status)
  execute_process(COMMAND ${PROGRAM} ${ARGN} WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE status
    OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL expected_status)
    message(FATAL_ERROR "${ARGN}: status ${status}, expected ${expected_status}: ${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
foreach(size 0 1 1048575 1048576 2500000)
  string(REPEAT "x" ${size} content)
  file(WRITE "${WORK_DIR}/plain" "${content}")
  run(0 encrypt plain encrypted secret)
  run(0 decrypt encrypted restored secret)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files plain restored WORKING_DIRECTORY "${WORK_DIR}"
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()

run(1 decrypt encrypted restored wrong)
run(1 decrypt missing restored secret)
run(1)
if(NOT output MATCHES "usage: encrypt_file")
  message(FATAL_ERROR "no usage: ${output}")
endif()
# A piece less, at the very end of one: everything decrypts, and the digest is missing.
execute_process(COMMAND head -c -68 encrypted WORKING_DIRECTORY "${WORK_DIR}" OUTPUT_FILE "${WORK_DIR}/cut"
  COMMAND_ERROR_IS_FATAL ANY)
run(1 decrypt cut restored secret)

# SPDX-License-Identifier: Apache-2.0
# Takes a download that was signed and refuses one that was changed.
# Wants: PROGRAM, SIGN, KEYS, WORK_DIR; EMULATOR if they are for another system
set(PROGRAM ${EMULATOR} "${PROGRAM}")
set(SIGN ${EMULATOR} "${SIGN}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(public "${KEYS}/rsa2048_for_tests_only.pub.pem")
set(file "${WORK_DIR}/image.iso")
string(REPEAT "0123456789" 20000 content)
file(WRITE "${file}" "${content}")
execute_process(COMMAND ${SIGN} sign "${file}" "${KEYS}/rsa2048_for_tests_only.pem" COMMAND_ERROR_IS_FATAL ANY
  OUTPUT_QUIET)

file(RENAME "${file}" "${file}.part")
file(COPY_FILE "${file}.part" "${WORK_DIR}/changed")
execute_process(COMMAND ${PROGRAM} "${file}" "${public}" RESULT_VARIABLE status OUTPUT_VARIABLE output
  ERROR_VARIABLE errors)
if(NOT status EQUAL 0 OR NOT output MATCHES "verified: " OR NOT EXISTS "${file}" OR EXISTS "${file}.part")
  message(FATAL_ERROR "status ${status}: ${output}${errors}")
endif()

file(REMOVE "${file}")
file(RENAME "${WORK_DIR}/changed" "${file}.part")
file(APPEND "${file}.part" "x")
execute_process(COMMAND ${PROGRAM} "${file}" "${public}" RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 1 OR NOT errors MATCHES "not one of this file" OR EXISTS "${file}")
  message(FATAL_ERROR "status ${status}: ${errors}")
endif()

# SPDX-License-Identifier: Apache-2.0
# Signs a configuration, reads it, changes it, and expects that it is refused.
# Wants: SIGN, READ, KEYS, WORK_DIR; EMULATOR if they are for another system
set(READ ${EMULATOR} "${READ}")
set(SIGN ${EMULATOR} "${SIGN}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(public "${KEYS}/rsa2048_for_tests_only.pub.pem")
file(WRITE "${WORK_DIR}/a.ini" "[job]\npath = C:\\data\nkeep = 30\n")
execute_process(COMMAND ${SIGN} sign "${WORK_DIR}/a.ini" "${KEYS}/rsa2048_for_tests_only.pem"
  COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
execute_process(COMMAND ${READ} "${WORK_DIR}/a.ini" "${public}" RESULT_VARIABLE status OUTPUT_VARIABLE output)
if(NOT status EQUAL 0 OR NOT output MATCHES "^/job/path = C:.data\r?\n/job/keep = 30\r?\n$")
  message(FATAL_ERROR "status ${status}: ${output}")
endif()
file(APPEND "${WORK_DIR}/a.ini" "keep = 0\n")
execute_process(COMMAND ${READ} "${WORK_DIR}/a.ini" "${public}" RESULT_VARIABLE status ERROR_VARIABLE output)
if(NOT status EQUAL 1 OR NOT output MATCHES "Somebody changed the configuration")
  message(FATAL_ERROR "status ${status}: ${output}")
endif()

# SPDX-License-Identifier: Apache-2.0
# Signs configurations and reads them, changes one, and expects that it is refused.
# Wants: SIGN, READ, KEYS, WORK_DIR; EMULATOR if they are for another system
set(READ ${EMULATOR} "${READ}")
set(SIGN ${EMULATOR} "${SIGN}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(public "${KEYS}/rsa2048_for_tests_only.pub.pem")

function(write_signed name text)
  file(WRITE "${WORK_DIR}/${name}" "${text}")
  execute_process(COMMAND ${SIGN} sign "${WORK_DIR}/${name}" "${KEYS}/rsa2048_for_tests_only.pem"
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endfunction()

function(read_config name expected_status expected_output)
  execute_process(COMMAND ${READ} "${WORK_DIR}/${name}" "${public}" RESULT_VARIABLE status OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
  if(NOT status EQUAL expected_status OR NOT output MATCHES "${expected_output}")
    message(FATAL_ERROR "${name}: status ${status}: ${output}")
  endif()
endfunction()

write_signed(a.ini "[job]\npath = C:\\data\nkeep = 30\n")
read_config(a.ini 0 "^/job/path = C:.data\r?\n/job/keep = 30\r?\n$")
file(APPEND "${WORK_DIR}/a.ini" "keep = 0\n")
read_config(a.ini 1 "Somebody changed the configuration")

# Values of a section with "/" in its name are listed, but no key reaches them.
write_signed(slash.ini "first = 1\n[net]\nport = 80\n[net/port2]\nx = 3\n[end]\nlast = 2\n")
read_config(slash.ini 0 "/net/port = 80\r?\n/end/last = 2\r?\n$")

if(NOT EMULATOR)
  # Names are UTF-8, and so is what comes out.
  write_signed("données.ini" "[où]\nclé = été\n")
  read_config("données.ini" 0 "^/où/clé = été\n$")
endif()

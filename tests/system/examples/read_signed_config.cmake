# SPDX-License-Identifier: Apache-2.0
# Signs and reads configurations. A changed one is refused.
# More arguments: KEYS
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")

function(write_signed name text)
  file(WRITE "${WORK_DIR}/${name}" "${text}")
  run(0 file_signature sign ${name} "${KEYS}/rsa2048_for_tests_only.pem")
endfunction()

function(read_config name expected_status expected_output)
  run(${expected_status} read_signed_config ${name} "${KEYS}/rsa2048_for_tests_only.pub.pem")
  expect("${output}${errors}" "${expected_output}")
endfunction()

set(defaults "^cipher      aes256cbc\r?\niterations  100000\r?\n")
write_signed(a.ini "[job]\npath = C:\\data\nkeep = 30\n")
read_config(a.ini 0 "${defaults}/job/path = C:.data\r?\n/job/keep = 30\r?\n$")
file(APPEND "${WORK_DIR}/a.ini" "keep = 0\n")
read_config(a.ini 1 "^Somebody changed the configuration")

write_signed(b.ini "[backup]\niterations = 250000\n")
read_config(b.ini 0 "^cipher      aes256cbc\r?\niterations  250000\r?\n/backup/iterations = 250000\r?\n$")
write_signed(b.ini "[backup]\niterations = 25O000\n")
read_config(b.ini 1 "Config value '/backup/iterations' is not a number that fits. .value=25O000.")

# Values of a section with "/" in its name are listed, but no key reaches them.
write_signed(slash.ini "first = 1\n[net]\nport = 80\n[net/port2]\nx = 3\n[end]\nlast = 2\n")
read_config(slash.ini 0 "${defaults}//first = 1\r?\n/net/port = 80\r?\n/end/last = 2\r?\n$")

if(NOT SUFFIX)
  # Names and the output are UTF-8.
  write_signed("données.ini" "[où]\nclé = été\n")
  read_config("données.ini" 0 "${defaults}/où/clé = été\n$")
endif()

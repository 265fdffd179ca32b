# SPDX-License-Identifier: Apache-2.0
# Checks the two forms of an error: one for the user, one for the log.
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")

run(0 show_errors)
expect("${output}" "^The job 'données' failed.\r?\n$")
string(CONCAT expected "^The job 'données' failed. .job=données. Caused by: Cannot open file "
  "'[^\n]*no such file': [^\n]*, reason=[^\n]* Code 2[.]\r?\n  job: données\r?\n$")
expect("${errors}" "${expected}")

# SPDX-License-Identifier: Apache-2.0
# Digests files that grow or are cut, and files with damaged states.
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")

function(expect_digest content size)
  run(0 resume_digest log state)
  string(SHA256 whole "${content}")
  expect("${output}" "^${whole}  ${size} bytes\r?\n$")
endfunction()

file(WRITE "${WORK_DIR}/log" "only ")
expect_digest("only " 5)
file(APPEND "${WORK_DIR}/log" "copy")
expect_digest("only copy" 9)
expect_digest("only copy" 9)
# The beginning is not read again.
file(WRITE "${WORK_DIR}/log" "ONLY COPY, and more")
expect_digest("only copy, and more" 19)
# Larger than the pieces of the program.
string(REPEAT "0123456789" 20000 more)
file(APPEND "${WORK_DIR}/log" "${more}")
expect_digest("only copy, and more${more}" 200019)

file(WRITE "${WORK_DIR}/log" "cut")
run(1 resume_digest log state)
expect("${errors}" "shorter than before")
run(1 resume_digest none state)
expect("${errors}" "cannot be read")
file(WRITE "${WORK_DIR}/log" "only copy, and more${more}")
file(READ "${WORK_DIR}/state" state)
foreach(size 0 3 100)
  string(SUBSTRING "${state}" 0 ${size} cut_state)
  file(WRITE "${WORK_DIR}/state" "${cut_state}")
  run(1 resume_digest log state)
  expect_content(state "${cut_state}")
endforeach()

# SPDX-License-Identifier: Apache-2.0
# Runs the demo as a user would: whole round trips, a resumed digest, a wrong password, and damaged copies.
# More arguments: SOURCES
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")
function(run_demo expected_status expected_text)
  run(${expected_status} sarn_demo ${ARGN})
  string(FIND "${output}${errors}" "${expected_text}" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "demo ${ARGN} does not say '${expected_text}':\n${output}${errors}")
  endif()
endfunction()

function(truncate source target size)
  execute_process(COMMAND head -c ${size} "${source}" OUTPUT_FILE "${target}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(REPEAT "people's only copy of their data\n" 100 text)
file(WRITE "${WORK_DIR}/file.txt" "${text}")
file(WRITE "${WORK_DIR}/empty.txt" "")
set(copy "${WORK_DIR}/0.encrypted")

run_demo(0 "restored files are identical" "${SOURCES}")
foreach(cipher aes256cbc aes128cbc bfcbc cast128cbc)
  run_demo(0 "restored files are identical" "${WORK_DIR}/empty.txt" --cipher ${cipher})
  run_demo(0 "restored files are identical" "${WORK_DIR}/file.txt" --cipher ${cipher} --keep "${WORK_DIR}")
endforeach()
foreach(noticed "configuration  Invalid signature for config file."
    "manifest       The manifest's signature does not match."
    "stored file    The restored file has another digest" "other half: the same" "its HMAC is right")
  run_demo(0 "${noticed}" "${WORK_DIR}/file.txt" --keep "${WORK_DIR}" --password secret)
endforeach()
file(STRINGS "${WORK_DIR}/manifest.ini" names REGEX "^0=[0-9a-f]+ file.txt$")
if(NOT names)
  message(FATAL_ERROR "the manifest does not hold the file's name below the folder that was backed up")
endif()
run_demo(0 "Restored to" restore "${copy}" --password secret)
file(READ "${copy}.restored" restored)
if(NOT restored STREQUAL text)
  message(FATAL_ERROR "the restored file differs")
endif()

run_demo(0 "saved" digest "${WORK_DIR}/file.txt" "${WORK_DIR}/state" 1234)
run_demo(0 "cf46f1fe79aa463e06f8231dcfe5b69189d230861269d536c18cd41c1249bab17e14a29ce19db8ea"
  digest "${WORK_DIR}/file.txt" "${WORK_DIR}/state")
file(WRITE "${WORK_DIR}/state" "no state")
run_demo(1 "Error: " digest "${WORK_DIR}/file.txt" "${WORK_DIR}/state")

# Only the digest notices one wrong key in 256.
run_demo(1 "Error: " restore "${copy}" --password wrong)
file(COPY_FILE "${copy}" "${WORK_DIR}/whole")
file(REMOVE "${copy}.restored")
# Cut inside a block, between two, and inside the IV.
foreach(cut "1000=Error: OpenSSL decrypt error." "1008=Error: " "10=COpenSSLCipher::decrypt: invalid input data size")
  string(REGEX MATCH "^([0-9]+)=(.*)$" matched "${cut}")
  truncate("${WORK_DIR}/whole" "${copy}" ${CMAKE_MATCH_1})
  run_demo(1 "${CMAKE_MATCH_2}" restore "${copy}" --password secret)
endforeach()
expect_none(0.encrypted.restored)
file(APPEND "${WORK_DIR}/manifest.ini" " ")
run_demo(1 "Error: The manifest's signature does not match. [path=" restore "${copy}" --password secret)
run_demo(1 "Error: Unknown cipher id 'rot13'." "${WORK_DIR}/file.txt" --cipher rot13)
run_demo(1 "Error: " "${WORK_DIR}/missing")
run_demo(2 "usage: " --no-such-option)

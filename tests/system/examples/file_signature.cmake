# SPDX-License-Identifier: Apache-2.0
# Signatures go to the openssl command line and come back from it, RSA and DSA, files of sizes around the chunk.
# Wants: PROGRAM, OPENSSL, KEYS, WORK_DIR; EMULATOR if they are for another system
set(PROGRAM ${EMULATOR} "${PROGRAM}")
function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE status OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
foreach(size 0 1 8191 8192 8193 16384 1000000)
  string(REPEAT "x" ${size} content)
  file(WRITE "${WORK_DIR}/file" "${content}")
  foreach(key rsa1024 rsa2048 rsa4096 dsa1024 dsa2048)
    set(private "${KEYS}/${key}_for_tests_only.pem")
    set(public "${KEYS}/${key}_for_tests_only.pub.pem")

    run(${PROGRAM} sign file "${private}")
    run("${OPENSSL}" base64 -d -in file.sig -out signature)
    run("${OPENSSL}" dgst -sha1 -verify "${public}" -signature signature file)

    run("${OPENSSL}" dgst -sha1 -sign "${private}" -out signature file)
    run("${OPENSSL}" base64 -in signature -out file.sig)
    run(${PROGRAM} verify file "${public}")
  endforeach()
endforeach()

file(APPEND "${WORK_DIR}/file" "y")
execute_process(COMMAND ${PROGRAM} verify file "${KEYS}/dsa2048_for_tests_only.pub.pem"
  WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE status OUTPUT_VARIABLE output)
if(status EQUAL 0 OR NOT output MATCHES "WRONG")
  message(FATAL_ERROR "a changed file was taken: ${output}")
endif()

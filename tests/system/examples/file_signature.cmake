# SPDX-License-Identifier: Apache-2.0
# The openssl program verifies signatures of the example, and the other way round: RSA and DSA, file sizes around the
# chunk, and an encrypted key.
# More arguments: OPENSSL, KEYS
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")

# Verifies the signature file of a file by the openssl program.
function(expect_verified file public)
  run_tool("${OPENSSL}" base64 -d -in ${file}.sig -out signature)
  run_tool("${OPENSSL}" dgst -sha1 -verify "${public}" -signature signature ${file})
endfunction()

foreach(size 0 1 8191 8192 8193 16384 1000000)
  string(REPEAT "x" ${size} content)
  file(WRITE "${WORK_DIR}/file" "${content}")
  foreach(key rsa1024 rsa2048 rsa4096 dsa1024 dsa2048)
    set(private "${KEYS}/${key}_for_tests_only.pem")
    set(public "${KEYS}/${key}_for_tests_only.pub.pem")

    run(0 file_signature sign file "${private}")
    expect_verified(file "${public}")

    run_tool("${OPENSSL}" dgst -sha1 -sign "${private}" -out signature file)
    run_tool("${OPENSSL}" base64 -in signature -out file.sig)
    run(0 file_signature verify file "${public}")
    expect("${output}" "the signature is right")
  endforeach()
endforeach()

file(APPEND "${WORK_DIR}/file" "y")
run(1 file_signature verify file "${KEYS}/dsa2048_for_tests_only.pub.pem")
expect("${output}" "WRONG")

# An encrypted key, and an impossible passphrase.
set(private "${KEYS}/rsa2048_encrypted_pkcs8_for_tests_only.pem")
file(WRITE "${WORK_DIR}/phrase" "for tests only\n")
run(0 file_signature sign file "${private}" phrase)
expect("${output}" "signed, 256 bytes")
expect_verified(file "${KEYS}/rsa2048_for_tests_only.pub.pem")
file(WRITE "${WORK_DIR}/phrase" "with ä and €\n")
run(1 file_signature sign file "${private}" phrase)
expect("${errors}" "checkPassPhrase: pass phrase has a character outside Latin-1")
run(1 file_signature both file "${private}")
expect("${errors}" "usage: file_signature")

if(NOT SUFFIX)
  # Names are UTF-8.
  file(RENAME "${WORK_DIR}/file" "${WORK_DIR}/données-€")
  run(0 file_signature sign données-€ "${KEYS}/rsa2048_for_tests_only.pem")
  expect_verified(données-€ "${KEYS}/rsa2048_for_tests_only.pub.pem")
endif()

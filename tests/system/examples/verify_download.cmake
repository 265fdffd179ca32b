# SPDX-License-Identifier: Apache-2.0
# Accepts a signed download and refuses a changed one. No name makes the program verify one file and accept another.
# More arguments: KEYS
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")
set(public "${KEYS}/rsa2048_for_tests_only.pub.pem")
string(REPEAT "0123456789" 20000 content)

# Makes a signed download: NAME.part and NAME.sig.
function(make_download name)
  file(WRITE "${WORK_DIR}/signed" "${content}")
  run(0 file_signature sign signed "${KEYS}/rsa2048_for_tests_only.pem")
  file(RENAME "${WORK_DIR}/signed" "${WORK_DIR}/${name}.part")
  file(RENAME "${WORK_DIR}/signed.sig" "${WORK_DIR}/${name}.sig")
endfunction()

function(verify name expected_status expected_output)
  run(${expected_status} verify_download "${name}" "${public}")
  expect("${output}${errors}" "${expected_output}")
endfunction()

function(expect_taken name)
  expect_content(${name} "${content}")
  expect_none(${name}.part)
endfunction()

make_download(image.iso)
verify(image.iso 0 "verified: ")
expect_taken(image.iso)

make_download(changed)
file(APPEND "${WORK_DIR}/changed.part" "x")
verify(changed 1 "not one of this file")
expect_none(changed)

make_download(absolute)
verify("${WORK_DIR}/absolute" 0 "verified: ")
expect_taken(absolute)

if(NOT SUFFIX)
  # The system follows the link before "..". The library's path contains neither.
  file(MAKE_DIRECTORY "${WORK_DIR}/x" "${WORK_DIR}/elsewhere/deep")
  file(CREATE_LINK ../elsewhere/deep "${WORK_DIR}/x/link" SYMBOLIC)
  make_download(x/f)
  file(WRITE "${WORK_DIR}/elsewhere/f.part" "evil")
  verify(x/link/../f 0 "verified: ")
  expect_taken(x/f)
  expect_none(elsewhere/f)

  # For the system a backslash is part of a name.
  file(MAKE_DIRECTORY "${WORK_DIR}/sub")
  make_download(sub/g)
  run_tool(sh -c "printf evil >'sub\\g.part'")
  verify("sub\\g" 0 "verified: ")
  expect_taken(sub/g)
  run_tool(sh -c "test ! -e 'sub\\g'")

  # The bytes of a UTF-8 name, read as characters, are another name.
  make_download("donnÃ©es")
  file(WRITE "${WORK_DIR}/données.part" "evil")
  verify("données" 1 "Cannot open file .*données.sig")
  expect_none("données")
  make_download("données")
  verify("données" 0 "verified: ")
  expect_taken("données")

  # The library drops a dot at the end of a name.
  make_download(c.ini)
  file(WRITE "${WORK_DIR}/c.ini..part" "evil")
  file(COPY_FILE "${WORK_DIR}/c.ini.sig" "${WORK_DIR}/c.ini..sig")
  verify("c.ini." 1 "not one of this file")
  expect_none("c.ini.")
  expect_none("c.ini")

  # The target of a link may change later.
  make_download(behind)
  file(CREATE_LINK behind.part "${WORK_DIR}/front.part" SYMBOLIC)
  file(COPY_FILE "${WORK_DIR}/behind.sig" "${WORK_DIR}/front.sig")
  verify(front 1 "It is a link")
  expect_none(front)
endif()

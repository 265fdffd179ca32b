# SPDX-License-Identifier: Apache-2.0
# Takes a download that was signed, refuses one that was changed, and looks whether names can make the program verify
# one file and take over another.
# Wants: PROGRAM, SIGN, KEYS, WORK_DIR; EMULATOR if they are for another system
set(PROGRAM ${EMULATOR} "${PROGRAM}")
set(SIGN ${EMULATOR} "${SIGN}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(public "${KEYS}/rsa2048_for_tests_only.pub.pem")
string(REPEAT "0123456789" 20000 content)

# Makes a signed download: NAME.part and NAME.sig.
function(make_download name)
  file(WRITE "${WORK_DIR}/signed" "${content}")
  execute_process(COMMAND ${SIGN} sign signed "${KEYS}/rsa2048_for_tests_only.pem" WORKING_DIRECTORY "${WORK_DIR}"
    COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
  file(RENAME "${WORK_DIR}/signed" "${WORK_DIR}/${name}.part")
  file(RENAME "${WORK_DIR}/signed.sig" "${WORK_DIR}/${name}.sig")
endfunction()

function(verify name expected_status expected_output)
  execute_process(COMMAND ${PROGRAM} "${name}" "${public}" WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE status
    OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL expected_status OR NOT output MATCHES "${expected_output}")
    message(FATAL_ERROR "${name}: status ${status}: ${output}")
  endif()
endfunction()

function(expect_taken name)
  file(READ "${WORK_DIR}/${name}" taken)
  if(NOT taken STREQUAL content OR EXISTS "${WORK_DIR}/${name}.part")
    message(FATAL_ERROR "${name} is not what was signed")
  endif()
endfunction()

function(expect_not_taken name)
  if(EXISTS "${WORK_DIR}/${name}")
    message(FATAL_ERROR "${name} was taken over, which nobody signed")
  endif()
endfunction()

make_download(image.iso)
verify(image.iso 0 "verified: ")
expect_taken(image.iso)

make_download(changed)
file(APPEND "${WORK_DIR}/changed.part" "x")
verify(changed 1 "not one of this file")
expect_not_taken(changed)

make_download(absolute)
verify("${WORK_DIR}/absolute" 0 "verified: ")
expect_taken(absolute)

if(NOT EMULATOR)
  # The system goes through the link before it goes up; the library's path has neither.
  file(MAKE_DIRECTORY "${WORK_DIR}/x" "${WORK_DIR}/elsewhere/deep")
  file(CREATE_LINK ../elsewhere/deep "${WORK_DIR}/x/link" SYMBOLIC)
  make_download(x/f)
  file(WRITE "${WORK_DIR}/elsewhere/f.part" "evil")
  verify(x/link/../f 0 "verified: ")
  expect_taken(x/f)
  expect_not_taken(elsewhere/f)

  # To the system a backslash is part of a name.
  file(MAKE_DIRECTORY "${WORK_DIR}/sub")
  make_download(sub/g)
  execute_process(COMMAND sh -c "printf evil >'sub\\g.part'" WORKING_DIRECTORY "${WORK_DIR}" COMMAND_ERROR_IS_FATAL ANY)
  verify("sub\\g" 0 "verified: ")
  expect_taken(sub/g)
  execute_process(COMMAND sh -c "test ! -e 'sub\\g'" WORKING_DIRECTORY "${WORK_DIR}" COMMAND_ERROR_IS_FATAL ANY)

  # The bytes of a UTF-8 name taken for characters are another name.
  make_download("donnÃ©es")
  file(WRITE "${WORK_DIR}/données.part" "evil")
  verify("données" 1 "Cannot open file .*données.sig")
  expect_not_taken("données")
  make_download("données")
  verify("données" 0 "verified: ")
  expect_taken("données")

  # A dot at the end of a name is none to the library.
  make_download(c.ini)
  file(WRITE "${WORK_DIR}/c.ini..part" "evil")
  execute_process(COMMAND "${CMAKE_COMMAND}" -E copy c.ini.sig c.ini..sig WORKING_DIRECTORY "${WORK_DIR}")
  verify("c.ini." 1 "not one of this file")
  expect_not_taken("c.ini.")
  expect_not_taken("c.ini")

  # A link is what it leads to, and somebody may change that later.
  make_download(behind)
  file(CREATE_LINK behind.part "${WORK_DIR}/front.part" SYMBOLIC)
  file(COPY_FILE "${WORK_DIR}/behind.sig" "${WORK_DIR}/front.sig")
  verify(front 1 "It is a link")
  expect_not_taken(front)
endif()

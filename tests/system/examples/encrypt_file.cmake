# SPDX-License-Identifier: Apache-2.0
# Encrypts files around the size of a piece, decrypts them, and tampers with encrypted ones in every way that somebody
# without the password has.
# Wants: PROGRAM, WORK_DIR; EMULATOR if they are for another system
set(PROGRAM ${EMULATOR} "${PROGRAM}")
function(run expected_status)
  execute_process(COMMAND ${PROGRAM} ${ARGN} WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE status
    OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL expected_status)
    message(FATAL_ERROR "${ARGN}: status ${status}, expected ${expected_status}: ${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Joins pieces of files, each FILE=FIRST:COUNT in bytes, to the file `result`.
function(join result)
  file(WRITE "${WORK_DIR}/${result}" "")
  foreach(piece IN LISTS ARGN)
    string(REGEX MATCH "^(.*)=([0-9]+):([0-9]+)$" matched "${piece}")
    math(EXPR first "${CMAKE_MATCH_2} + 1")
    execute_process(COMMAND sh -c "tail -c +${first} '${CMAKE_MATCH_1}' | head -c ${CMAKE_MATCH_3} >>'${result}'"
      WORKING_DIRECTORY "${WORK_DIR}" COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endfunction()

# Expects that a file is refused and that nothing stands under the name that it was to be decrypted to.
function(expect_refused file password)
  file(REMOVE "${WORK_DIR}/restored")
  run(1 decrypt ${file} restored ${password})
  if(EXISTS "${WORK_DIR}/restored")
    message(FATAL_ERROR "${file} is refused, and yet restored")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
foreach(size 0 1 1048575 1048576 2500000)
  string(REPEAT "x" ${size} content)
  file(WRITE "${WORK_DIR}/plain" "${content}")
  run(0 encrypt plain encrypted secret)
  run(0 decrypt encrypted restored secret)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files plain restored WORKING_DIRECTORY "${WORK_DIR}"
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()

run(1 decrypt missing restored secret)
run(1 neither encrypted restored secret)
run(2)
if(NOT output MATCHES "usage: encrypt_file")
  message(FATAL_ERROR "no usage: ${output}")
endif()
expect_refused(encrypted wrong)

# A salt of 8 bytes, then pieces with 5 bytes ahead, a ciphertext of 32 bytes more than a whole piece, and 20 behind.
math(EXPR piece "5 + 1048576 + 32 + 20")
math(EXPR second "8 + ${piece}")
math(EXPR third "8 + 2 * ${piece}")
file(SIZE "${WORK_DIR}/encrypted" whole)
math(EXPR rest "${whole} - ${third}")
if(rest LESS 400000 OR rest GREATER 410000)
  message(FATAL_ERROR "pieces have another size than this test knows: ${whole} bytes")
endif()

# Cut everywhere of interest: within the salt, at the end of each piece, within one, before the last bytes.
foreach(size 0 7 8 12 100 ${second} 1500000 ${third})
  join(cut "encrypted=0:${size}")
  expect_refused(cut secret)
endforeach()
foreach(missing 1 20 21)
  math(EXPR size "${whole} - ${missing}")
  join(cut "encrypted=0:${size}")
  expect_refused(cut secret)
endforeach()
# Longer, with its last piece twice, with pieces exchanged, left out, and of another file under the same password.
join(changed "encrypted=0:${whole}" "encrypted=0:1")
expect_refused(changed secret)
join(changed "encrypted=0:${whole}" "encrypted=${third}:${rest}")
expect_refused(changed secret)
join(changed "encrypted=0:8" "encrypted=${second}:${piece}" "encrypted=8:${piece}" "encrypted=${third}:${rest}")
expect_refused(changed secret)
join(changed "encrypted=0:${second}" "encrypted=${third}:${rest}")
expect_refused(changed secret)
run(0 encrypt plain another secret)
join(changed "another=0:${second}" "encrypted=${second}:${whole}")
expect_refused(changed secret)
# The flag of the last piece set on the first one, behind which the file is cut.
file(WRITE "${WORK_DIR}/flag" "x")
execute_process(COMMAND printf "\\001" OUTPUT_FILE "${WORK_DIR}/flag" COMMAND_ERROR_IS_FATAL ANY)
math(EXPR first "${piece} - 5")
join(changed "encrypted=0:12" "flag=0:1" "encrypted=13:${first}")
expect_refused(changed secret)
# One byte changed in each part: salt, size, IV, ciphertext, HMAC.
foreach(position 0 8 13 500 1048620 1048640)
  math(EXPR next "${position} + 1")
  join(changed "encrypted=0:${position}" "flag=0:1" "encrypted=${next}:${whole}")
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files encrypted changed WORKING_DIRECTORY "${WORK_DIR}"
    RESULT_VARIABLE is_other ERROR_QUIET)
  if(is_other)
    expect_refused(changed secret)
  endif()
endforeach()

# A text that ends in a digest of what is ahead of it is a text like any other: cut or not.
execute_process(COMMAND printf "%b%b"
    "\\0343\\0260\\0304\\0102\\0230\\0374\\0034\\0024\\0232\\0373\\0364\\0310\\0231\\0157\\0271\\0044"
    "\\0047\\0256\\0101\\0344\\0144\\0233\\0223\\0114\\0244\\0225\\0231\\0033\\0170\\0122\\0270\\0125"
  OUTPUT_FILE "${WORK_DIR}/plain" COMMAND_ERROR_IS_FATAL ANY)
run(0 encrypt plain encrypted secret)
run(0 decrypt encrypted restored secret)
file(SIZE "${WORK_DIR}/encrypted" whole)
foreach(size 8 76 96)
  join(cut "encrypted=0:${size}")
  expect_refused(cut secret)
endforeach()

if(NOT EMULATOR)
  # Names are UTF-8.
  file(RENAME "${WORK_DIR}/plain" "${WORK_DIR}/données")
  run(0 encrypt données chiffrées secret)
  run(0 decrypt chiffrées restaurées secret)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files données restaurées WORKING_DIRECTORY "${WORK_DIR}"
    COMMAND_ERROR_IS_FATAL ANY)
endif()

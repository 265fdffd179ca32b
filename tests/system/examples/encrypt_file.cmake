# SPDX-License-Identifier: Apache-2.0
# Encrypts files around the size of a piece, decrypts them, and tampers with encrypted ones in every way that needs no
# password. If a file is refused, an existing file with the name of the result is unchanged.
include("${CMAKE_CURRENT_LIST_DIR}/programs.cmake")

# Joins parts of files, each FILE=FIRST:COUNT in bytes, to the file `result`.
function(join result)
  file(WRITE "${WORK_DIR}/${result}" "")
  foreach(part IN LISTS ARGN)
    string(REGEX MATCH "^(.*)=([0-9]+):([0-9]+)$" matched "${part}")
    math(EXPR first "${CMAKE_MATCH_2} + 1")
    run_tool(sh -c "tail -c +${first} '${CMAKE_MATCH_1}' | head -c ${CMAKE_MATCH_3} >>'${result}'")
  endforeach()
endfunction()

function(expect_refused_with expected_errors)
  file(WRITE "${WORK_DIR}/target" "as it was")
  run(1 encrypt_file ${ARGN})
  expect("${errors}" "${expected_errors}")
  expect_content(target "as it was")
  expect_none(target.part)
endfunction()
function(expect_refused)
  join(changed ${ARGN})
  expect_refused_with("cut or changed|Unexpected end of stream" decrypt changed target password)
endfunction()

function(expect_round_trip plain encrypted restored)
  run(0 encrypt_file encrypt ${plain} ${encrypted} password)
  run(0 encrypt_file decrypt ${encrypted} ${restored} password)
  run_tool("${CMAKE_COMMAND}" -E compare_files ${plain} ${restored})
  expect_none(${encrypted}.part ${restored}.part)
endfunction()

file(WRITE "${WORK_DIR}/password" "pass phrase with ä and €\nand a line that does not count\n")
file(WRITE "${WORK_DIR}/other" "pass phrase with ä and E\n")
string(RANDOM LENGTH 100000 RANDOM_SEED 17 text)
string(REPEAT "${text}" 25 text)
foreach(size 0 1 15 16 1048575 1048576 1048577 2500000)
  string(SUBSTRING "${text}" 0 ${size} content)
  file(WRITE "${WORK_DIR}/plain" "${content}")
  expect_round_trip(plain encrypted restored)
endforeach()

expect_refused_with("The password is another one" decrypt encrypted target other)
expect_refused_with("Cannot open file .*none" decrypt none target password)
expect_refused_with("Cannot open file .*none" encrypt plain target none)
expect_refused_with("Cannot write none/target.part" encrypt plain none/target password)
expect_refused_with("usage: encrypt_file" neither encrypted target password)
expect_refused_with("usage: encrypt_file")

# A salt and an IV of 16 bytes each, the ciphertext, and an HMAC of 20. The program works in pieces of a mebibyte.
set(piece 1048576)
math(EXPR second "32 + ${piece}")
math(EXPR third "32 + 2 * ${piece}")
file(SIZE "${WORK_DIR}/encrypted" whole)
math(EXPR mac "${whole} - 20")
if(NOT whole EQUAL 2500068)
  message(FATAL_ERROR "an encrypted file has another size than this test knows: ${whole} bytes")
endif()

# Cut: within the salt and the IV, between blocks, at the end of each piece and within one, before the last bytes.
foreach(size 0 15 16 20 31 32 36 48 68 100 ${second} 1500000 ${third})
  expect_refused("encrypted=0:${size}")
endforeach()
foreach(missing 1 16 19 20 21 36 52)
  math(EXPR size "${whole} - ${missing}")
  expect_refused("encrypted=0:${size}")
endforeach()
# Cut between blocks, with the HMAC moved to the new end.
math(EXPR last_block "${mac} - 16")
foreach(size 32 48 ${second} ${third} ${last_block})
  expect_refused("encrypted=0:${size}" "encrypted=${mac}:20")
endforeach()
# Longer, with its last piece twice, with pieces or blocks exchanged, or left out.
math(EXPR rest "${mac} - ${third}")
expect_refused("encrypted=0:${whole}" "encrypted=0:1")
expect_refused("encrypted=0:${whole}" "encrypted=${mac}:20")
expect_refused("encrypted=0:${whole}" "encrypted=${third}:${whole}")
expect_refused("encrypted=0:${mac}" "encrypted=${third}:${whole}")
expect_refused("encrypted=0:32" "encrypted=${second}:${piece}" "encrypted=32:${piece}" "encrypted=${third}:${whole}")
expect_refused("encrypted=0:32" "encrypted=48:16" "encrypted=32:16" "encrypted=64:${whole}")
expect_refused("encrypted=0:${second}" "encrypted=${third}:${whole}")
expect_refused("encrypted=0:48" "encrypted=64:${whole}")
# With parts of another file under the same password: salt, IV, each piece, HMAC.
run(0 encrypt_file encrypt plain another password)
foreach(part 0:16 16:16 32:${piece} ${second}:${piece} ${third}:${rest} ${mac}:20)
  string(REPLACE ":" ";" range "${part}")
  list(GET range 0 first)
  list(GET range 1 count)
  math(EXPR next "${first} + ${count}")
  expect_refused("encrypted=0:${first}" "another=${part}" "encrypted=${next}:${whole}")
endforeach()
# With one byte changed at both ends of each part: one of two bytes differs from the old one.
file(WRITE "${WORK_DIR}/bytes" "xy")
math(EXPR last "${whole} - 1")
math(EXPR last_of_ciphertext "${mac} - 1")
foreach(position 0 15 16 31 32 500 ${second} ${last_block} ${last_of_ciphertext} ${mac} ${last})
  math(EXPR next "${position} + 1")
  foreach(byte 0 1)
    join(changed "encrypted=0:${position}" "bytes=${byte}:1" "encrypted=${next}:${whole}")
    execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files encrypted changed WORKING_DIRECTORY "${WORK_DIR}"
      RESULT_VARIABLE is_other ERROR_QUIET)
    if(is_other)
      break()
    endif()
  endforeach()
  expect_refused("changed=0:${whole}")
endforeach()

# A text that ends in a digest of its beginning is not special, whole or cut.
execute_process(COMMAND printf "%b%b"
    "\\0343\\0260\\0304\\0102\\0230\\0374\\0034\\0024\\0232\\0373\\0364\\0310\\0231\\0157\\0271\\0044"
    "\\0047\\0256\\0101\\0344\\0144\\0233\\0223\\0114\\0244\\0225\\0231\\0033\\0170\\0122\\0270\\0125"
  OUTPUT_FILE "${WORK_DIR}/plain" COMMAND_ERROR_IS_FATAL ANY)
expect_round_trip(plain encrypted restored)
foreach(size 32 48 64 80)
  expect_refused("encrypted=0:${size}")
endforeach()

if(NOT SUFFIX)
  # Names are UTF-8.
  file(RENAME "${WORK_DIR}/plain" "${WORK_DIR}/données-€")
  expect_round_trip(données-€ chiffrées restaurées)
endif()

# SPDX-License-Identifier: Apache-2.0
# Builds the consumer project in one way and runs it.
# Wants: WORK_DIR, SOURCE_DIR, WAY, OPTIONS (for cmake, joined by |); EMULATOR and LIBRARIES (a folder with DLLs) if it
# is for another system; PREFIX to install what was built
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "failed (${status}): ${command}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
string(REPLACE "|" ";" options "${OPTIONS}")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}" -G Ninja "-DSARN_WAY=${WAY}" ${options})
run("${CMAKE_COMMAND}" --build "${WORK_DIR}")
set(program "${WORK_DIR}/consumer")
if(EXISTS "${program}.exe")
  # Windows looks for DLLs beside the program.
  file(GLOB libraries "${LIBRARIES}/*.dll")
  file(COPY ${libraries} DESTINATION "${WORK_DIR}")
  run(${EMULATOR} "${program}.exe")
else()
  run("${program}")
endif()
if(NOT output MATCHES "sarn [0-9.]+ with OpenSSL [0-9.]+")
  message(FATAL_ERROR "unexpected output: ${output}")
endif()
message(STATUS "${output}")
if(PREFIX)
  run("${CMAKE_COMMAND}" --install "${WORK_DIR}" --prefix "${PREFIX}")
endif()

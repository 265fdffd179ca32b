# SPDX-License-Identifier: Apache-2.0
# Installs the build into a fresh prefix, builds the consumer project against it and runs that.
# Wants: BUILD_DIR, WORK_DIR, SOURCE_DIR, CXX, FLAGS, CONFIG; TOOLCHAIN and EMULATOR if it is for another system
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "failed (${status}): ${command}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix" --config "${CONFIG}")
# The prefix must work wherever it is moved to.
file(RENAME "${WORK_DIR}/prefix" "${WORK_DIR}/moved")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja
  "-DCMAKE_PREFIX_PATH=${WORK_DIR}/moved" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${FLAGS}"
  "-DCMAKE_BUILD_TYPE=${CONFIG}" "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}"
  "-DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
if(EXISTS "${WORK_DIR}/build/consumer.exe")
  # Windows looks for DLLs beside the program.
  file(COPY_FILE "${WORK_DIR}/build/consumer.exe" "${WORK_DIR}/moved/bin/consumer.exe")
  run(${EMULATOR} "${WORK_DIR}/moved/bin/consumer.exe")
else()
  run("${WORK_DIR}/build/consumer")
endif()

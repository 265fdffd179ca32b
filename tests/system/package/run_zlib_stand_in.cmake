# SPDX-License-Identifier: Apache-2.0
# Replaces zlib's checksums by another implementation of their interface: the tests of the digests must still pass, and
# the build must use the library that ZLIB_ROOT gives.
# Arguments: TESTS, LIBRARY (the stand-in), HEADERS (a folder with zlib's headers), SOURCE_DIR, WORK_DIR, LIBCRYPTO
file(REMOVE_RECURSE "${WORK_DIR}")
file(COPY "${HEADERS}/zlib.h" "${HEADERS}/zconf.h" DESTINATION "${WORK_DIR}/root/include" FOLLOW_SYMLINK_CHAIN)
file(MAKE_DIRECTORY "${WORK_DIR}/root/lib")
file(COPY_FILE "${LIBRARY}" "${WORK_DIR}/root/lib/libz.so")

execute_process(
  # Loaded first, beside zlib: there are builds of libcrypto that call the rest of it.
  COMMAND "${CMAKE_COMMAND}" -E env "LD_PRELOAD=${LIBRARY}" "SARN_TEST_ZLIB_LOG=${WORK_DIR}/log"
    "${TESTS}" "--gtest_filter=*Digest*:*Checksum*" --gtest_brief=1
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the digests depend on which zlib computes them:\n${output}")
endif()
file(READ "${WORK_DIR}/log" log)
if(NOT log MATCHES "adler32" OR NOT log MATCHES "crc32")
  message(FATAL_ERROR "the stand-in was not used: ${log}")
endif()

execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja "-DZLIB_ROOT=${WORK_DIR}/root"
    "-DOPENSSL_ROOT_DIR=${LIBCRYPTO}" -DSARN_BUILD_TESTS=OFF -DSARN_BUILD_EXAMPLES=OFF
  OUTPUT_VARIABLE output ERROR_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
# Not a pattern: the name of a folder may contain "+".
file(READ "${WORK_DIR}/build/build.ninja" rules)
string(FIND "${rules}" "${WORK_DIR}/root/lib/libz.so" found)
if(found EQUAL -1)
  message(FATAL_ERROR "ZLIB_ROOT was not taken")
endif()

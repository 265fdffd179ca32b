# SPDX-License-Identifier: Apache-2.0
# Compiles one public header alone and fails if it reaches a header of libcrypto or zlib.
# Wants: CXX, HEADER, INCLUDES (joined by |)
string(REPLACE "|" ";" includes "${INCLUDES}")
list(TRANSFORM includes PREPEND "-I")
execute_process(
  COMMAND "${CXX}" -std=c++17 -pedantic-errors -Wall -Wextra -Werror ${includes} -x c++ -fsyntax-only -H "${HEADER}"
  RESULT_VARIABLE status ERROR_VARIABLE output)
if(NOT status EQUAL 0 AND NOT output MATCHES "#pragma once in main file")
  message(FATAL_ERROR "${HEADER} does not compile alone:\n${output}")
endif()
if(output MATCHES "openssl/|zlib\\.h")
  message(FATAL_ERROR "${HEADER} reaches a header of libcrypto or zlib:\n${output}")
endif()

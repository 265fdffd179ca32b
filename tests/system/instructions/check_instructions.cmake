# SPDX-License-Identifier: Apache-2.0
# Compares the instructions of the hottest calls with the recorded figures. The tolerance covers another version of the
# C library, but not an additional allocation or lock.
# Arguments: COUNT, PROGRAM, FIGURES; UPDATE writes the figures
execute_process(COMMAND "${COUNT}" "${PROGRAM}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(UPDATE)
  file(WRITE "${FIGURES}" "${output}")
  return()
endif()
file(STRINGS "${FIGURES}" expected)
list(LENGTH expected calls)
if(calls LESS 12)
  message(FATAL_ERROR "${FIGURES} has fewer than twelve calls")
endif()
message("${output}")
foreach(line IN LISTS expected)
  string(REGEX MATCH "^(.*) = ([0-9]+)$" matched "${line}")
  set(call "${CMAKE_MATCH_1}")
  set(before "${CMAKE_MATCH_2}")
  if(NOT output MATCHES "${call} = ([0-9]+)")
    message(FATAL_ERROR "'${call}' was not counted")
  endif()
  set(now "${CMAKE_MATCH_1}")
  math(EXPR limit "${before} + ${before} * 4 / 100 + 8")
  if(now GREATER limit)
    message(SEND_ERROR "'${call}' takes ${now} instructions, ${before} before. If that is meant: "
      "cmake -DUPDATE=1 -DCOUNT=${COUNT} -DPROGRAM=${PROGRAM} -DFIGURES=${FIGURES} -P ${CMAKE_CURRENT_LIST_FILE}")
  endif()
endforeach()

# SPDX-License-Identifier: Apache-2.0
# Compares the instructions of the hottest calls with the recorded figures. The tolerance covers another version of the
# C library, but not an additional lock, allocation or check of a key. scripts/check-tree requires of a commit that
# raises a figure that it says why.
# Arguments: COUNT, PROGRAM, FIGURES; UPDATE writes the figures
execute_process(COMMAND "${COUNT}" "${PROGRAM}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(UPDATE)
  file(WRITE "${FIGURES}" "${output}")
  return()
endif()
message("${output}")
file(STRINGS "${FIGURES}" expected)
foreach(line IN LISTS expected)
  string(REGEX MATCH "^(.*) = ([0-9]+)$" matched "${line}")
  set(call "${CMAKE_MATCH_1}")
  set(before "${CMAKE_MATCH_2}")
  if(NOT output MATCHES "${call} = ([0-9]+)")
    message(FATAL_ERROR "'${call}' was not counted")
  endif()
  set(now "${CMAKE_MATCH_1}")
  math(EXPR more "${now} - ${before}")
  math(EXPR tolerance "${before} / 100 + 8")
  if(more GREATER tolerance)
    message(SEND_ERROR "'${call}' takes ${now} instructions, ${more} more than the ${before} before. If that is meant: "
      "cmake -DUPDATE=1 -DCOUNT=${COUNT} -DPROGRAM=${PROGRAM} -DFIGURES=${FIGURES} -P ${CMAKE_CURRENT_LIST_FILE}")
  endif()
endforeach()
string(REGEX MATCHALL " = [0-9]+\n" counted "${output}")
list(LENGTH expected figures)
list(LENGTH counted calls)
if(calls EQUAL 0 OR NOT calls EQUAL figures)
  message(FATAL_ERROR "${calls} calls were counted, but ${FIGURES} has ${figures}")
endif()

# SPDX-License-Identifier: Apache-2.0
# Compiles the consumer with the flags of pkg-config and runs it.
# Arguments: WORK_DIR, SOURCE (main.cpp), CXX, PREFIX, PKG_CONFIG, STATIC (empty or --static), LINK_FLAGS
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
file(GLOB_RECURSE pc "${PREFIX}/*/sarn.pc")
get_filename_component(pc_folder "${pc}" DIRECTORY)
get_filename_component(libraries "${pc_folder}" DIRECTORY)
set(command "'${CXX}' -std=c++17 -o consumer '${SOURCE}' $('${PKG_CONFIG}' ${STATIC} --cflags --libs 'sarn >= 1.0')")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -E env "PKG_CONFIG_PATH=${pc_folder}" sh -c "${command} ${LINK_FLAGS}"
  WORKING_DIRECTORY "${WORK_DIR}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${libraries}" "${WORK_DIR}/consumer"
  OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output MATCHES "sarn [0-9.]+ with OpenSSL [0-9.]+")
  message(FATAL_ERROR "unexpected output: ${output}")
endif()

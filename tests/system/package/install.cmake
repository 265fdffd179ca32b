# SPDX-License-Identifier: Apache-2.0
# Installs a build into a new prefix and moves it: it must work anywhere.
# Arguments: BUILD_DIR, PREFIX, CONFIG
file(REMOVE_RECURSE "${PREFIX}" "${PREFIX}-first")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}-first" --config "${CONFIG}"
  OUTPUT_VARIABLE output ERROR_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${PREFIX}-first" "${PREFIX}")

# SPDX-License-Identifier: Apache-2.0
# Draws the pictures again and compares.
# Arguments: PYTHON, FOLDER, WORK_DIR
file(REMOVE_RECURSE "${WORK_DIR}")
file(COPY "${FOLDER}/draw.py" "${FOLDER}/peers.csv" DESTINATION "${WORK_DIR}")
execute_process(COMMAND "${PYTHON}" "${WORK_DIR}/draw.py" COMMAND_ERROR_IS_FATAL ANY)
file(GLOB pictures RELATIVE "${FOLDER}" "${FOLDER}/*.svg")
file(GLOB drawn RELATIVE "${WORK_DIR}" "${WORK_DIR}/*.svg")
if(NOT pictures STREQUAL drawn)
  message(FATAL_ERROR "there are ${pictures}, drawn were ${drawn}")
endif()
foreach(picture IN LISTS pictures)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${FOLDER}/${picture}" "${WORK_DIR}/${picture}"
    RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(SEND_ERROR "${picture} is not what draw.py draws")
  endif()
endforeach()

# SPDX-License-Identifier: Apache-2.0
# Compiles programs as hosts do, with every warning that they may use.
# Arguments: CXX, FLAGS, STANDARD, WORK_DIR; SOURCES and INCLUDES, joined by |. To link the programs: LIBRARIES, joined
# by |, and LIBCRYPTO, the folder of that library
string(REPLACE "|" ";" sources "${SOURCES}")
string(REPLACE "|" ";" includes "${INCLUDES}")
string(REPLACE "|" ";" libraries "${LIBRARIES}")
list(TRANSFORM includes PREPEND "-I")
set(compile "${CXX}" ${FLAGS} -std=c++${STANDARD} -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror ${includes}
  "-DSARN_DEMO_SOURCES=\"\"")

# The headers take most of the time, so they are compiled once.
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(headers "${WORK_DIR}/headers.h")
file(WRITE "${headers}" "#include <sarn/host.h>\n#include <fstream>\n#include <iostream>\n")
execute_process(COMMAND ${compile} -x c++-header "${headers}" -o "${headers}.gch" COMMAND_ERROR_IS_FATAL ANY)

set(link "-Wl,-rpath-link,${LIBCRYPTO}")
foreach(library IN LISTS libraries)
  get_filename_component(folder "${library}" DIRECTORY)
  list(APPEND link "${library}" "-Wl,-rpath,${folder}")
endforeach()
set(failed FALSE)
foreach(source IN LISTS sources)
  set(result -fsyntax-only)
  if(libraries)
    get_filename_component(name "${source}" NAME_WE)
    set(result ${link} -o "${WORK_DIR}/${name}")
  endif()
  execute_process(COMMAND ${compile} -include "${headers}" "${source}" ${result}
    RESULT_VARIABLE status ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message("${source}:\n${errors}")
    set(failed TRUE)
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "not every program compiles with ${CXX} as C++${STANDARD}")
endif()

# SPDX-License-Identifier: Apache-2.0
# Compiles the host programs as hosts do, with every warning that they may have switched on.
# Wants: CXX, STANDARD, SOURCES (joined by |), INCLUDES (joined by |), and OUT_DIR, LIBRARIES, LIBCRYPTO to link them
string(REPLACE "|" ";" sources "${SOURCES}")
string(REPLACE "|" ";" includes "${INCLUDES}")
list(TRANSFORM includes PREPEND "-I")
set(failed FALSE)
foreach(source IN LISTS sources)
  set(result -fsyntax-only)
  if(OUT_DIR)
    file(MAKE_DIRECTORY "${OUT_DIR}")
    get_filename_component(name "${source}" NAME_WE)
    string(REPLACE "|" ";" libraries "${LIBRARIES}")
    set(result ${libraries} "-Wl,-rpath-link,${LIBCRYPTO}" -o "${OUT_DIR}/${name}")
    foreach(library IN LISTS libraries)
      get_filename_component(folder "${library}" DIRECTORY)
      list(APPEND result "-Wl,-rpath,${folder}")
    endforeach()
  endif()
  execute_process(
    COMMAND "${CXX}" -std=c++${STANDARD} -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror ${includes} "${source}"
      ${result}
    RESULT_VARIABLE status ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message("${source}:\n${errors}")
    set(failed TRUE)
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "not every program compiles with ${CXX} as C++${STANDARD}")
endif()

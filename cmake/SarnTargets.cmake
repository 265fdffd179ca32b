# SPDX-License-Identifier: Apache-2.0
# Compile options of all targets of this project. Nothing here changes a global of the including project.

# Applies the language level, warnings and sanitizers of this project to one target.
function(sarn_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 $<$<BOOL:${SARN_WARNINGS_AS_ERRORS}>:/WX>)
    return()
  endif()
  if(NOT WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    # By default 32-bit systems open no file of 2 GiB or more, and none that was changed after 2038.
    target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
  endif()
  # Resources of Windows are compiled too.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${SARN_WARNINGS_AS_ERRORS}>:-Werror>>)
  if(SARN_SANITIZERS)
    target_compile_options(${target} PRIVATE -fsanitize=${SARN_SANITIZERS} -fno-omit-frame-pointer
      -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${SARN_SANITIZERS})
  endif()
endfunction()

# Lets a developer wait less for a program: its own code is not optimised, unlike the libraries, which do its work. Its
# headers are precompiled for the target `owner` and for all that name the same, but not with a compiler cache, which
# works better without, and not for Windows, whose compiler would warn about its own headers.
function(sarn_compile_fast target owner)
  if(NOT SARN_BUILD_TESTS OR MSVC)
    return()
  endif()
  # Optimised, some precompiled headers make GCC 12 warn about the standard library.
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O0>)
  if(CMAKE_CXX_COMPILER_LAUNCHER OR WIN32)
    return()
  endif()
  if(target STREQUAL owner)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  else()
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endif()
endfunction()

# Adds the library `name` with the alias `name`::`name` and macros that begin with `prefix`. A shared library exports
# only marked declarations.
function(sarn_add_library name prefix)
  if(NOT SARN_BUILD_SHARED)
    add_library(${name} STATIC ${ARGN})
    target_compile_definitions(${name} PUBLIC ${prefix}_STATIC_LIBRARY)
    # They may become part of another project's shared library.
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  else()
    add_library(${name} SHARED ${ARGN})
    target_compile_definitions(${name} PRIVATE ${prefix}_BUILDING_LIBRARY)
    sarn_configure_shared(${name})
  endif()
  add_library(${name}::${name} ALIAS ${name})
  sarn_configure_target(${name})
endfunction()

function(sarn_configure_shared target)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN")
  if(NOT SARN_INSTALL_LIBCRYPTO)
    # A libcrypto outside the system's folders is found at the path that it had at build time.
    set_target_properties(${target} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  endif()
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
    configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/version.rc" @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/version.rc")
  endif()
  if(UNIX AND NOT APPLE)
    set(name ${target})
    string(LENGTH "${name}" mangled_name)
    string(APPEND mangled_name "${name}")
    configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/exports.map.in" "${CMAKE_CURRENT_BINARY_DIR}/exports.map" @ONLY)
    target_link_options(${target} PRIVATE "-Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/exports.map")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/exports.map")
    # Lets functions of a library call each other directly, and be inlined, although they are exported. clang always
    # does; nobody replaces single functions of a library.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
    # The libraries are never unloaded: that would remove the process-wide objects, and the code that libcrypto calls,
    # while other threads may use them.
    target_link_options(${target} PRIVATE -Wl,-z,nodelete)
    # Calls are bound on loading. The first call of a function would save all registers on the stack to bind it, with
    # parts of secrets in them, and nobody wipes that copy.
    target_link_options(${target} PRIVATE -Wl,-z,now)
    if(NOT SARN_SANITIZERS)
      # A missing symbol is a link error here, not an error in a host that loads the library.
      target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
  endif()
endfunction()

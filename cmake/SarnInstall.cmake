# SPDX-License-Identifier: Apache-2.0
# Install rules, with the package files for CMake and pkg-config.
include(CMakePackageConfigHelpers)

set(sarn_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/sarn")
# Relative path from the package files to the prefix, so that the prefix can be moved.
file(RELATIVE_PATH sarn_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" sarn_pc_to_prefix "${sarn_pc_to_prefix}")

# Installs a library with its headers and package files.
function(sarn_install_library name)
  # CMake before 3.23 does not know file sets and uses the folder.
  target_include_directories(${name} INTERFACE "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  install(TARGETS ${name} EXPORT ${name}-targets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT lib${name}
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT lib${name} NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
  install(EXPORT ${name}-targets NAMESPACE ${name}:: DESTINATION "${sarn_package_dir}" COMPONENT development)
  if(NOT SARN_BUILD_SHARED)
    string(TOUPPER "${name}" prefix)
    set(static_flags " -D${prefix}_STATIC_LIBRARY")
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development)
endfunction()

if(WIN32)
  set(sarn_system_libraries " -lbcrypt")
endif()
sarn_install_library(ul)
if(TARGET sarn)
  sarn_install_library(sarn)
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/sarn-config.cmake.in"
    "${PROJECT_BINARY_DIR}/sarn-config.cmake" INSTALL_DESTINATION "${sarn_package_dir}")
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/sarn-config-version.cmake"
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/sarn-config.cmake" "${PROJECT_BINARY_DIR}/sarn-config-version.cmake"
    DESTINATION "${sarn_package_dir}" COMPONENT development)
  if(SARN_INSTALL_LIBCRYPTO AND WIN32)
    include(SarnWindows)
  elseif(SARN_INSTALL_LIBCRYPTO)
    # The reference libcrypto is not a package of the target system, so it is installed with the libraries.
    get_filename_component(libcrypto "${OPENSSL_CRYPTO_LIBRARY}" REALPATH)
    install(FILES "${libcrypto}" DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT libsarn)
  endif()
endif()
if(NOT SARN_DEBIAN_FILES)
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT libul)
endif()

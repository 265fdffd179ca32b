# SPDX-License-Identifier: Apache-2.0
# Install rules and the package config that lets another project say find_package(sarn CONFIG REQUIRED).
include(CMakePackageConfigHelpers)

set(sarn_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/sarn")

install(TARGETS ul EXPORT ul-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(EXPORT ul-targets NAMESPACE ul:: DESTINATION "${sarn_package_dir}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/ul/include/ul" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

if(TARGET sarn)
  install(TARGETS sarn EXPORT sarn-targets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  install(EXPORT sarn-targets NAMESPACE sarn:: DESTINATION "${sarn_package_dir}")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/sarn" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/sarn-config.cmake.in"
    "${PROJECT_BINARY_DIR}/sarn-config.cmake" INSTALL_DESTINATION "${sarn_package_dir}")
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/sarn-config-version.cmake"
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
  install(FILES "${PROJECT_BINARY_DIR}/sarn-config.cmake" "${PROJECT_BINARY_DIR}/sarn-config-version.cmake"
    DESTINATION "${sarn_package_dir}")
  if(SARN_INSTALL_LIBCRYPTO)
    # The reference libcrypto is not a package of the system it is installed on: it travels with the libraries.
    get_filename_component(libcrypto "${OPENSSL_CRYPTO_LIBRARY}" REALPATH)
    install(FILES "${libcrypto}" DESTINATION "${CMAKE_INSTALL_LIBDIR}")
  endif()
endif()
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

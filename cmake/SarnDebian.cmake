# SPDX-License-Identifier: Apache-2.0
# Additional files of the Debian packages: copyright and changelog of each, the site and the examples.
string(TIMESTAMP sarn_package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog.in changelog.Debian @ONLY)
file(COPY_FILE "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_BINARY_DIR}/changelog" ONLY_IF_DIFFERENT)
foreach(name changelog changelog.Debian)
  execute_process(COMMAND gzip -9nkf "${PROJECT_BINARY_DIR}/${name}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()

foreach(package libul:libul1 libsarn:libsarn1 development:libsarn-dev documentation:libsarn-doc tools:sarn-tools)
  string(REPLACE ":" ";" package "${package}")
  list(GET package 0 component)
  list(GET package 1 name)
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/debian/copyright" "${PROJECT_BINARY_DIR}/changelog.gz"
    "${PROJECT_BINARY_DIR}/changelog.Debian.gz" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${name}"
    COMPONENT ${component})
endforeach()

set(documentation "${CMAKE_INSTALL_DATADIR}/doc/libsarn-doc")
install(DIRECTORY "${PROJECT_BINARY_DIR}/docs/html" DESTINATION "${documentation}" COMPONENT documentation
  PATTERN "*.map" EXCLUDE PATTERN "*.md5" EXCLUDE)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${documentation}" COMPONENT documentation
  PATTERN demo EXCLUDE PATTERN CMakeLists.txt EXCLUDE)

# SPDX-License-Identifier: Apache-2.0
# Reads the version from the header that states it: sarn_version.
set(sarn_version_header "${CMAKE_CURRENT_LIST_DIR}/../ul/include/ul/version.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${sarn_version_header}")
set(sarn_version "")
foreach(part MAJOR MINOR PATCH)
  file(STRINGS "${sarn_version_header}" line REGEX "^#define UL_VERSION_${part} [0-9]+$")
  if(NOT line MATCHES " ([0-9]+)$")
    message(FATAL_ERROR "${sarn_version_header} does not define UL_VERSION_${part}")
  endif()
  list(APPEND sarn_version "${CMAKE_MATCH_1}")
endforeach()
list(JOIN sarn_version "." sarn_version)

# SPDX-License-Identifier: Apache-2.0
# Packages of this project: cpack -G DEB with the preset packages, cpack -G ZIP with the preset windows.
set(SARN_PACKAGE_CONTACT "sarn maintainers <maintainers@sarn.example>" CACHE STRING
  "Maintainer of the packages, as Name <address>")

set(CPACK_PACKAGE_NAME sarn)
set(CPACK_PACKAGE_VENDOR sarn)
set(CPACK_PACKAGE_CONTACT "${SARN_PACKAGE_CONTACT}")
# Each package has its own summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(about "sarn is a library of cryptographic services for backup applications: ciphers
and digests by text identifier, digest states that can be saved and resumed,
keys from passwords, signatures over files, signed configurations.")

# Describes the Debian package of a component.
macro(sarn_describe_package component name section summary text)
  string(TOUPPER "${component}" id)
  set(CPACK_DEBIAN_${id}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${id}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${id}_DESCRIPTION "${summary}\n${about}\n.\n${text}")
endmacro()
sarn_describe_package(libul libul1 libs "base library of sarn"
  "This package contains the base library: objects, text, buffers, errors and\nfiles.")
sarn_describe_package(libsarn libsarn1 libs "cryptographic services for backup applications"
  "This package contains the shared library.")
sarn_describe_package(development libsarn-dev libdevel "headers of sarn and its base library"
  "This package contains the headers and the files for CMake and pkg-config.")
sarn_describe_package(documentation libsarn-doc doc "documentation and examples of sarn"
  "This package contains the guides, the reference and the examples.")

sarn_describe_package(tools sarn-tools utils "command of sarn for digests, encryption and signatures"
  "This package contains the command sarn, its manual page and its completion.")

set(CPACK_COMPONENTS_ALL libul libsarn development documentation tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBUL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBSARN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The trigger runs ldconfig, so CPack's own scripts are not needed. Naming non-existent scripts stops CPack from adding
# its own.
set(CPACK_DEBIAN_LIBUL_PACKAGE_CONTROL_EXTRA
  "${PROJECT_SOURCE_DIR}/cmake/debian/triggers;${PROJECT_BINARY_DIR}/none/postinst;${PROJECT_BINARY_DIR}/none/postrm")
set(CPACK_DEBIAN_LIBSARN_PACKAGE_CONTROL_EXTRA "${CPACK_DEBIAN_LIBUL_PACKAGE_CONTROL_EXTRA}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/ul" "${PROJECT_BINARY_DIR}/src")
# The libraries are built together and must have the same version.
set(built_together "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_LIBSARN_PACKAGE_DEPENDS "libul1 ${built_together}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libsarn1 ${built_together}, libul1 ${built_together}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libsarn1 ${built_together}, libul1 ${built_together}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libsarn-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

# The archive for Windows has a single top-level folder.
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_ARCHIVE_THREADS 0)

if(SARN_DEBIAN_FILES)
  include(SarnDebian)
endif()
include(CPack)

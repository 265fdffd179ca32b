# SPDX-License-Identifier: Apache-2.0
# Debian's cross compilers for Linux. Included by a toolchain file for one processor, which sets Debian's name of it,
# the triplet of its compiler and the loader of its programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(deps "${CMAKE_CURRENT_LIST_DIR}/../.deps")
set(CMAKE_FIND_ROOT_PATH "${deps}/reference-linux-${processor}" "${deps}/debian-${processor}" /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# The compiler's libraries and zlib are not where programs look for libraries by default. Libraries need each other, so
# the old tag is used, which is also valid for the dependencies of libraries without the new one.
set(CMAKE_SHARED_LINKER_FLAGS_INIT -Wl,--disable-new-dtags)
set(folders "/usr/${triplet}/lib:${deps}/debian-${processor}/usr/lib")
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--disable-new-dtags,-rpath,${folders},--dynamic-linker,/usr/${triplet}/lib/${loader}")

# SPDX-License-Identifier: Apache-2.0
# Additional files for Windows: the DLLs that the libraries depend on, and third-party licences.
set(licences "${CMAKE_INSTALL_DOCDIR}/licences")

# Installs DLLs with the licence file of each.
function(sarn_install_dlls licence_name licence)
  install(FILES ${ARGN} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT libsarn)
  install(FILES "${licence}" DESTINATION "${licences}" RENAME "${licence_name}.txt" COMPONENT libsarn)
endfunction()

get_filename_component(libcrypto_root "${OPENSSL_INCLUDE_DIR}" DIRECTORY)
file(GLOB libcrypto "${libcrypto_root}/bin/libcrypto-*.dll")
file(GLOB libcrypto_licence "${libcrypto_root}/LICENSE*")
sarn_install_dlls(openssl "${libcrypto_licence}" "${libcrypto}")

if(MINGW)
  set(documentation /usr/share/doc)
  foreach(name libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}.dll OUTPUT_VARIABLE dll
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    get_filename_component(dll "${dll}" REALPATH)
    list(APPEND runtime "${dll}")
  endforeach()
  sarn_install_dlls(gcc-runtime "${documentation}/gcc-mingw-w64-base/copyright" ${runtime})
  install(FILES "${documentation}/mingw-w64-common/copyright" DESTINATION "${licences}" RENAME mingw-w64.txt
    COMPONENT libsarn)
  get_filename_component(zlib_folder "${ZLIB_LIBRARIES}" DIRECTORY)
  sarn_install_dlls(zlib "${documentation}/libz-mingw-w64/copyright" "${zlib_folder}/zlib1.dll")
endif()
if(SARN_BUILD_TOOLS)
  install(FILES /usr/share/doc/libcli11-dev/copyright DESTINATION "${licences}" RENAME cli11.txt COMPONENT tools)
endif()
install(FILES /usr/share/doc/libutfcpp-dev/copyright DESTINATION "${licences}" RENAME utf8cpp.txt COMPONENT libsarn)

# Installation and packages. Everything private goes below one folder, PREFIX/lib/qvxcolor:
#
#   bin/hostrun                         finds what follows relative to itself
#   lib/qvxcolor/QVXColor.so            the bundle
#   lib/qvxcolor/libcocoa.so            the platform library
#   lib/qvxcolor/libhostrun-trace.so    what "hostrun trace" puts before the platform library
#   lib/qvxcolor/usr/lib/*.so.*         the 32-bit libraries that they need, all but the C and C++ run-time
#   lib/qvxcolor/usr/{lib,share}/GNUstep   what GNUstep reads at run-time; libcocoa.so looks for it beside GNUstep's libraries
#   share/doc/qvxcolor                  documents, examples, licences
set(CMAKE_INSTALL_DOCDIR share/doc/qvxcolor CACHE PATH "documents, examples and licences")
include(GNUInstallDirs)
set(private_folder ${CMAKE_INSTALL_LIBDIR}/qvxcolor)
set(private_path ${CMAKE_INSTALL_FULL_LIBDIR}/qvxcolor)
cmake_path(RELATIVE_PATH private_path BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE private_from_bin)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_DOCDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE doc_from_bin)
target_compile_definitions(hostrun_commands PRIVATE
  QVX_PRIVATE_FROM_BIN="${private_from_bin}" QVX_DOC_FROM_BIN="${doc_from_bin}")
# Libraries of headers name their files in assertions.
target_compile_options(hostrun_commands PRIVATE -fmacro-prefix-map=${QVX_SYSROOT}/usr/include/=)
# The build's own run-time path is among the link options; the install script replaces it. CMake's way of doing so would
# end the build's path with an empty entry, which stands for the current folder.
set_target_properties(hostrun cocoa PROPERTIES BUILD_WITH_INSTALL_RPATH ON)

install(TARGETS hostrun RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS QVXColor cocoa hostrun_trace LIBRARY DESTINATION ${private_folder})

# The closure of both without the machine's own run-time, by what each file names. libobjc and libgomp come with the
# compiler and are carried along.
set(hostrun_installed ${CMAKE_INSTALL_BINDIR}/hostrun)
set(cocoa_installed ${private_folder}/libcocoa.so)
configure_file(${CMAKE_CURRENT_LIST_DIR}/install_libraries.cmake.in ${PROJECT_BINARY_DIR}/install_libraries.cmake @ONLY)
install(CODE "execute_process(
  COMMAND \"${CMAKE_COMMAND}\" \"-Droot=\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\" -P \"${PROJECT_BINARY_DIR}/install_libraries.cmake\"
  COMMAND_ERROR_IS_FATAL ANY)")
foreach(folder Colors Libraries)
  install(DIRECTORY ${QVX_SYSROOT}/usr/share/GNUstep/${folder} DESTINATION ${private_folder}/usr/share/GNUstep)
endforeach()

install(FILES README.md CHANGELOG.md LICENSE NOTICE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

# What Debian looks for in a package: whose the work is, and what changed.
file(READ LICENSE licence)
file(READ NOTICE notice)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/copyright CONTENT "@licence@\n@notice@" @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME changelog)

set(CPACK_GENERATOR DEB TXZ)
set(CPACK_PACKAGE_NAME qvxcolor)
set(CPACK_PACKAGE_VENDOR "The QVXColor developers")
set(CPACK_PACKAGE_CONTACT "The QVXColor developers <qvxcolor@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Colour classes for programs of the host language, with a host to run them")
set(CPACK_PACKAGE_FILE_NAME qvxcolor-${PROJECT_VERSION}-linux-i386)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_FILE_NAME qvxcolor_${PROJECT_VERSION}_amd64.deb)
# 32-bit programs for amd64 machines, by the 32-bit run-time that Debian has for them.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6-i386 (>= 2.36), lib32stdc++6 (>= 12), lib32gcc-s1 (>= 12)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fontconfig-config, fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "hostrun runs programs of the host language through the plugin bundle QVXColor.so,\n whose classes wrap the platform's colours, colour lists and colour spaces. libcocoa.so\n gives the bundle its platform. The 32-bit libraries it needs are included.")
include(CPack)

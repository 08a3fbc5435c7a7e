# Installation; tools/package packs what is installed. Everything private goes below one folder, PREFIX/lib/qvxcolor:
#
#   bin/hostrun                         finds what follows relative to itself
#   lib/qvxcolor/QVXColor.so            the bundle
#   lib/qvxcolor/libcocoa.so            the platform library
#   lib/qvxcolor/libhostrun-trace.so    what "hostrun trace" puts before the platform library
#   lib/qvxcolor/usr/lib/*.so.*         the 32-bit libraries that they need, all but the C and C++ run-time
#   lib/qvxcolor/usr/{lib,share}/GNUstep   what GNUstep reads at run-time; libcocoa.so looks for it beside GNUstep's libraries
#   share/doc/qvxcolor                  documents, examples, licences
#   share/man, share/bash-completion ...  the manual page, and what shells complete
set(CMAKE_INSTALL_DOCDIR share/doc/qvxcolor CACHE PATH "documents, examples and licences")
include(GNUInstallDirs)
set(private_folder ${CMAKE_INSTALL_LIBDIR}/qvxcolor)
set(private_path ${CMAKE_INSTALL_FULL_LIBDIR}/qvxcolor)
cmake_path(RELATIVE_PATH private_path BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE private_from_bin)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_DOCDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE doc_from_bin)
target_compile_definitions(hostrun_commands PRIVATE
  QVX_PRIVATE_FROM_BIN="${private_from_bin}" QVX_DOC_FROM_BIN="${doc_from_bin}")
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

# compressed(SOURCE FILE): FILE, made of SOURCE, without a name or a time in it.
function(compressed source file)
  add_custom_command(OUTPUT ${file} DEPENDS ${source} COMMAND gzip -9nc ${source} > ${file} VERBATIM)
endfunction()

# The manual page, and what shells complete, as hostrun itself knows its options.
set(manual_folder ${PROJECT_BINARY_DIR}/manual)
file(MAKE_DIRECTORY ${manual_folder})
set(manual_page ${manual_folder}/hostrun.1)
add_custom_command(OUTPUT ${manual_page} DEPENDS hostrun COMMAND $<TARGET_FILE:hostrun> manual > ${manual_page} VERBATIM)
compressed(${manual_page} ${manual_page}.gz)
compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${manual_folder}/changelog.gz)
set(completions)
foreach(shell bash zsh fish)
  add_custom_command(OUTPUT ${manual_folder}/hostrun.${shell} DEPENDS hostrun VERBATIM
    COMMAND $<TARGET_FILE:hostrun> completion ${shell} > ${manual_folder}/hostrun.${shell})
  list(APPEND completions ${manual_folder}/hostrun.${shell})
endforeach()
add_custom_target(manual ALL DEPENDS ${manual_page}.gz ${manual_folder}/changelog.gz ${completions})
install(FILES ${manual_page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${manual_folder}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${manual_folder}/hostrun.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME hostrun)
install(FILES ${manual_folder}/hostrun.zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions RENAME _hostrun)
install(FILES ${manual_folder}/hostrun.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# Tests of the platform library's mechanics: sends, exceptions, Core Foundation, headless operation, the pasteboard.

# Linked with the library, as a host may be. The library comes first: its objc_exception_throw has to win.
add_executable(libcocoa_runtime_tests
  dictionary_test.cpp
  exception_test.cpp
  host_support_test.cpp
  message_send_test.cpp
  pasteboard_test.cpp
  string_test.cpp
  url_test.cpp
  objective_c_paths.m
  pasteboard_owner.m
  runtime_main.cpp
  plain_c_paths.c
  ${PROJECT_SOURCE_DIR}/bundle/platform/message.cpp)
target_link_libraries(libcocoa_runtime_tests PRIVATE cocoa gnustep gtest warnings)
# The compiler does not see the uses that @throw and @synchronized make of their operands.
set_property(SOURCE objective_c_paths.m PROPERTY COMPILE_OPTIONS
  -Wno-unused-but-set-parameter -Wno-objc-root-class)
set_property(SOURCE pasteboard_owner.m PROPERTY COMPILE_OPTIONS -Wno-unused-parameter)
set_property(SOURCE plain_c_paths.c PROPERTY COMPILE_OPTIONS
  -fno-exceptions -fno-unwind-tables -fno-asynchronous-unwind-tables -fno-omit-frame-pointer)
add_test(NAME libcocoa.runtime COMMAND libcocoa_runtime_tests)
set_tests_properties(libcocoa.runtime PROPERTIES TIMEOUT 120)

# Links nothing of GNUstep: it loads the library by its path, as the runner does.
add_executable(libcocoa_probe probe.cpp)
target_link_libraries(libcocoa_probe PRIVATE warnings dl)

# Another process at a pasteboard.
add_executable(libcocoa_pasteboard_peer pasteboard_peer.m)
target_link_libraries(libcocoa_pasteboard_peer PRIVATE cocoa gnustep warnings)
# It uses none of the library's own symbols, only what the library changes in GNUstep.
target_link_options(libcocoa_pasteboard_peer PRIVATE -Wl,--no-as-needed)
set_target_properties(libcocoa_pasteboard_peer PROPERTIES LINKER_LANGUAGE CXX)  # knows about run-time search paths

# Starts the probe under conditions of its own.
add_executable(libcocoa_loading_tests loading_test.cpp child_process.cpp runtime_main.cpp)
target_link_libraries(libcocoa_loading_tests PRIVATE gtest warnings dl)
target_compile_definitions(libcocoa_loading_tests PRIVATE
  PROBE="$<TARGET_FILE:libcocoa_probe>" PEER="$<TARGET_FILE:libcocoa_pasteboard_peer>"
  LIBRARY="$<TARGET_FILE:cocoa>" BUNDLE="$<TARGET_FILE:QVXColor>")
add_dependencies(libcocoa_loading_tests libcocoa_probe libcocoa_pasteboard_peer cocoa QVXColor)
add_test(NAME libcocoa.loading COMMAND libcocoa_loading_tests)
set_tests_properties(libcocoa.loading PROPERTIES TIMEOUT 120)

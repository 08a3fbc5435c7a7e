# Tests of the colour classes: GNUstep's own, and what libcocoa makes of them.
set(scenario_sources
  colours/archive_scenarios.m
  colours/colour_scenarios.m
  colours/conversion_scenarios.m
  colours/exchange_scenarios.m
  colours/folder_scenarios.m
  colours/gnustep_scenarios.m
  colours/ink_profile.c
  colours/ink_scenarios.m
  colours/list_file_scenarios.m
  colours/list_scenarios.m
  colours/named_scenarios.m
  colours/pasteboard_scenarios.m
  colours/profile_scenarios.m
  colours/scenario.m
  colours/space_scenarios.m)

# One source, two programs: with GNUstep alone, and with libcocoa before it.
add_executable(colour_scenarios_plain ${scenario_sources})
target_link_libraries(colour_scenarios_plain PRIVATE gnustep lcms2 warnings)
add_executable(colour_scenarios_here ${scenario_sources})
target_link_libraries(colour_scenarios_here PRIVATE cocoa gnustep lcms2 warnings)
foreach(program colour_scenarios_plain colour_scenarios_here)
  target_link_options(${program} PRIVATE -Wl,--no-as-needed)
  set_target_properties(${program} PROPERTIES LINKER_LANGUAGE C)  # CMake knows no run-time path for Objective-C
endforeach()

add_executable(colour_behaviour_test colours/colour_behaviour_test.cpp)
target_link_libraries(colour_behaviour_test PRIVATE gtest warnings)
target_compile_definitions(colour_behaviour_test PRIVATE
  QVX_SCENARIOS_PLAIN="$<TARGET_FILE:colour_scenarios_plain>"
  QVX_SCENARIOS_HERE="$<TARGET_FILE:colour_scenarios_here>"
  QVX_ICC_FOLDER="${QVX_SYSROOT}/usr/share/color/icc/ghostscript")
add_dependencies(colour_behaviour_test colour_scenarios_plain colour_scenarios_here)
add_test(NAME libcocoa.colour_behaviour COMMAND colour_behaviour_test)
set_tests_properties(libcocoa.colour_behaviour PROPERTIES TIMEOUT 600)

# Accuracy, damage, threads and memory: in one process, through the classes.
add_executable(colour_library_test
  colours/accuracy_test.cpp
  colours/damage_test.cpp
  colours/sharing_test.cpp
  colours/ink_profile.c
  colours/colour_calls.m)
target_link_libraries(colour_library_test PRIVATE cocoa gnustep lcms2 gtest warnings ${QVX_SYSROOT_LIB}/libgtest_main.a)
target_link_options(colour_library_test PRIVATE -Wl,--no-as-needed)
target_compile_definitions(colour_library_test PRIVATE
  QVX_ICC_FOLDER="${QVX_SYSROOT}/usr/share/color/icc/ghostscript"
  QVX_TRANSICC="${QVX_SYSROOT}/usr/bin/transicc"
  QVX_SYSROOT_PATH="${QVX_SYSROOT_LIBS}")
add_test(NAME libcocoa.colour_library COMMAND colour_library_test)
set_tests_properties(libcocoa.colour_library PROPERTIES TIMEOUT 600
  ENVIRONMENT "QVX_CMYK_PROFILE=${QVX_SYSROOT}/usr/share/color/icc/ghostscript/default_cmyk.icc")

# The bundle's own functions on the pasteboard, as a host calls them.
add_executable(bundle_pasteboard_test colours/bundle_pasteboard_test.cpp)
target_link_libraries(bundle_pasteboard_test PRIVATE real_host gtest warnings ${QVX_SYSROOT_LIB}/libgtest_main.a)
add_test(NAME libcocoa.bundle_pasteboard COMMAND bundle_pasteboard_test)
set_tests_properties(libcocoa.bundle_pasteboard PROPERTIES TIMEOUT 120)

# Every function of the bundle on every stack that a host may come with.
add_executable(bundle_stack_test colours/bundle_stack_test.cpp)
target_link_libraries(bundle_stack_test PRIVATE real_host stack_call gtest warnings ${QVX_SYSROOT_LIB}/libgtest_main.a)
add_test(NAME libcocoa.bundle_stack COMMAND bundle_stack_test)
set_tests_properties(libcocoa.bundle_stack PROPERTIES TIMEOUT 120)

# The runner's tests: programs on every host, and the unit tests of the runner's own parts.

set(host_versions 2011.0 2012.0 2013.0 2013.03 2013.04 2015.0)

# program_test(name file [option...])
function(program_test name file)
  add_test(NAME ${name} COMMAND ${CMAKE_COMMAND} -DHOSTRUN=$<TARGET_FILE:hostrun> -DPROGRAM=${file}
    "-DOPTIONS=${ARGN}" -P ${CMAKE_CURRENT_SOURCE_DIR}/tests/run_program.cmake)
  set_tests_properties(${name} PROPERTIES TIMEOUT 60)
endfunction()

file(GLOB examples CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.bas)
file(GLOB programs CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/programs/*.bas)
foreach(kind example program)
  foreach(file ${${kind}s})
    cmake_path(GET file STEM name)
    foreach(version ${host_versions})
      program_test(${kind}.${name}.${version} ${file} --host-version ${version})
    endforeach()
  endforeach()
endforeach()
add_test(NAME error.programs COMMAND ${PROJECT_SOURCE_DIR}/tests/programs/errors.sh $<TARGET_FILE:hostrun>)

# Hosts that lack something.
file(GLOB withheld CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/programs/hosts/*.bas)
foreach(file ${withheld})
  cmake_path(GET file STEM name)
  file(STRINGS ${file} options REGEX "^' options ")
  foreach(line ${options})
    string(REGEX REPLACE "^' options " "" line "${line}")
    string(MAKE_C_IDENTIFIER "${line}" id)
    separate_arguments(arguments UNIX_COMMAND "${line}")
    program_test(host.${name}${id} ${file} ${arguments})
  endforeach()
endforeach()

add_test(NAME use.hostrun COMMAND ${PROJECT_SOURCE_DIR}/tests/programs/use.sh $<TARGET_FILE:hostrun>
  $<TARGET_FILE:hostrun_fixture_bundle>)

# A bundle of the tests' own, which needs no platform.
add_library(hostrun_fixture_bundle MODULE tests/fixture_bundle.cpp)
target_link_libraries(hostrun_fixture_bundle PRIVATE warnings)
target_include_directories(hostrun_fixture_bundle PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(hostrun_fixture_bundle PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden)

add_executable(runner_unit_tests
  tests/declaration_test.cpp
  tests/dispatch_test.cpp
  tests/fixture_bundle.cpp
  tests/registry_test.cpp
  tests/text_test.cpp
  tests/unit_main.cpp)
target_link_libraries(runner_unit_tests PRIVATE runner_language gtest warnings)
add_test(NAME runner.unit COMMAND runner_unit_tests)

# Every declaration of every class, called once.
add_executable(runner_table_test tests/table_test.cpp)
target_link_libraries(runner_table_test PRIVATE runner_commands gtest warnings)
foreach(version ${host_versions})
  add_test(NAME runner.table.${version} COMMAND runner_table_test --bundle $<TARGET_FILE:QVXColor>
    --platform $<TARGET_FILE:cocoa> --host-version ${version})
endforeach()

# Builds that watch the tests: QVX_SANITIZE checks memory and undefined behaviour, QVX_COVERAGE counts what is reached.
option(QVX_SANITIZE "Check memory and undefined behaviour while the tests run" OFF)
option(QVX_FUZZ "Build the fuzz targets with clang's coverage-guided fuzzer and AddressSanitizer" OFF)
option(QVX_COVERAGE "Count the lines and branches that the tests reach" OFF)
if(QVX_SANITIZE)
  # -g1: a finding's stack needs lines, and nothing else.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=address,undefined)
  add_library(sanitizer_options OBJECT ${CMAKE_CURRENT_LIST_DIR}/sanitizer_options.c)
  link_libraries($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:sanitizer_options>>)
endif()
if(QVX_FUZZ)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fsanitize=fuzzer-no-link,address> -O1 -Wno-error)
  add_link_options($<$<LINK_LANGUAGE:CXX>:-fsanitize=address>)
endif()
if(QVX_COVERAGE)
  # Inlining would split a line's branches over its callers.
  add_compile_options(--coverage -fprofile-abs-path -O0 -fno-inline)
  add_link_options(--coverage)
endif()

# uncounted(target): leaves a target out of what QVX_COVERAGE counts, so that it runs at full speed.
function(uncounted target)
  if(QVX_COVERAGE)
    target_compile_options(${target} PRIVATE -fno-profile-arcs -fno-test-coverage -finline -O2)
  endif()
endfunction()

# checked_test(name): a test that takes longer where it is watched.
function(checked_test name)
  if(QVX_SANITIZE OR QVX_COVERAGE)
    set_tests_properties(${name} PROPERTIES TIMEOUT 3600)
  endif()
endfunction()

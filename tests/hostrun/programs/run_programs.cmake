# tests/hostrun/programs/run_programs.cmake - runs many programs through another bundle, as run_program.cmake runs one.
#
#   cmake -DHOSTRUN=FILE -DBUNDLE=FILE -DPROGRAMS=FILE,FILE,... [-DOPTIONS=OPTION] -P run_programs.cmake
#
# A program with lines "' options OPTION..." runs once with each line's options.
set(failed FALSE)
set(runs 0)

function(run program)
  execute_process(COMMAND ${CMAKE_COMMAND} -DHOSTRUN=${HOSTRUN} -DPROGRAM=${program}
    "-DOPTIONS=--bundle;${BUNDLE};${ARGN}" -P ${CMAKE_CURRENT_LIST_DIR}/run_program.cmake
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message("${program} ${ARGN}\n${said}")
    set(failed TRUE PARENT_SCOPE)
  endif()
endfunction()

string(REPLACE "," ";" programs "${PROGRAMS}")
foreach(program ${programs})
  file(STRINGS ${program} lines REGEX "^' options ")
  if(NOT lines)
    set(lines "' options ")
  endif()
  foreach(line ${lines})
    string(REGEX REPLACE "^' options " "" line "${line}")
    separate_arguments(arguments UNIX_COMMAND "${line}")
    run(${program} ${OPTIONS} ${arguments})
    math(EXPR runs "${runs} + 1")
  endforeach()
endforeach()
message("${runs} runs")
if(failed OR runs EQUAL 0)
  message(FATAL_ERROR "wanted every program to do as its files say, found the above")
endif()

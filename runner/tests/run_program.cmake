# runner/tests/run_program.cmake - runs one program and compares what it says.
#
#   cmake -DHOSTRUN=FILE -DPROGRAM=NAME.bas [-DOPTIONS=LIST] -P run_program.cmake
#
# Beside NAME.bas: NAME.out is what it must print. A program whose first line is "' wants STATUS LINE:COLUMN: TEXT"
# must end with that status and say so first on stderr; without LINE:COLUMN, the text may stand anywhere there.
cmake_path(GET PROGRAM PARENT_PATH folder)
cmake_path(GET PROGRAM STEM name)
execute_process(COMMAND ${HOSTRUN} --leaks ${OPTIONS} ${name}.bas one "second argument"
  WORKING_DIRECTORY ${folder} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)

set(wanted_status 0)
file(STRINGS ${PROGRAM} first LIMIT_COUNT 1)
if(first MATCHES "^' wants ([0-9]+) (.*)$")
  set(wanted_status ${CMAKE_MATCH_1})
  set(wanted_text "${CMAKE_MATCH_2}")
  if(wanted_text MATCHES "^[0-9]+:[0-9]+: ")
    set(wanted_text "${name}.bas:${wanted_text}")
    string(FIND "${err}" "${wanted_text}" at)
    if(NOT at EQUAL 0)
      message(FATAL_ERROR "wanted stderr to begin with\n${wanted_text}\nfound\n${err}")
    endif()
  else()
    string(FIND "${err}" "${wanted_text}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "wanted on stderr\n${wanted_text}\nfound\n${err}")
    endif()
  endif()
endif()
if(NOT status EQUAL wanted_status)
  message(FATAL_ERROR "wanted status ${wanted_status}, found ${status}\nstdout:\n${out}\nstderr:\n${err}")
endif()

set(wanted_out "")
if(EXISTS ${folder}/${name}.out)
  file(READ ${folder}/${name}.out wanted_out)
elseif(wanted_status EQUAL 0)
  message(FATAL_ERROR "wanted ${name}.out beside the program, found none")
endif()
if(NOT out STREQUAL wanted_out)
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}.actual "${out}")
  message(FATAL_ERROR "wanted the output of ${name}.out, found\n${out}\nstderr:\n${err}")
endif()

# tests/hostrun/programs/run_program.cmake - runs one program and compares what it says.
#
#   cmake -DHOSTRUN=FILE -DPROGRAM=NAME.bas [-DOPTIONS=LIST] -P run_program.cmake
#
# Beside NAME.bas: NAME.out is what it must print. A program whose first line is "' wants STATUS TEXT" must end with
# that status and have the text on stderr. NAME.err, where there is one, is all that it must say there,
# but for what the platform logs with a date.
cmake_path(GET PROGRAM PARENT_PATH folder)
cmake_path(GET PROGRAM STEM name)
execute_process(COMMAND ${HOSTRUN} --leaks ${OPTIONS} ${name}.bas one "second argument"
  WORKING_DIRECTORY ${folder} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)

set(wanted_status 0)
file(READ ${PROGRAM} program)
if(program MATCHES "^' wants ([0-9]+) ([^\n]*)\n")
  set(wanted_status ${CMAKE_MATCH_1})
  set(wanted_text "${CMAKE_MATCH_2}")
  string(FIND "\n${err}" "${wanted_text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "wanted on stderr\n${wanted_text}\nfound\n${err}")
  endif()
endif()
if(EXISTS ${folder}/${name}.err)
  file(READ ${folder}/${name}.err wanted_err)
  string(REGEX REPLACE "[0-9]+-[0-9]+-[0-9]+ [0-9:.]+ hostrun[^\n]*\n" "" err "${err}")
  if(NOT err STREQUAL wanted_err)
    message(FATAL_ERROR "wanted on stderr all of ${name}.err, found\n${err}")
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

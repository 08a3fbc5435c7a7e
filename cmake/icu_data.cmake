# Makes a smaller copy of ICU's library of data, for packages: the language data of English only, without the converters
# of character sets and the dictionaries that find words in East Asian texts. Where ICU looks for another language it
# goes on to its root data, and the character sets of files are converted by the C library.
#
#   cmake -Dlibrary=FILE -Dout=FILE -Dcompiler=GCC -Dobjcopy=OBJCOPY -P icu_data.cmake
cmake_minimum_required(VERSION 3.25)
if(EXISTS ${out} AND ${out} IS_NEWER_THAN ${library} AND ${out} IS_NEWER_THAN ${CMAKE_CURRENT_LIST_FILE})
  return()
endif()
foreach(program icupkg derb genrb)
  find_program(${program} ${program} PATHS /usr/sbin)
  if(NOT ${program})
    message(FATAL_ERROR "wanted ${program}, which comes with the Debian package icu-devtools, found none; run tools/bootstrap")
  endif()
endforeach()
cmake_path(GET library FILENAME name)
string(REGEX REPLACE "^libicudata\\.so\\.([0-9]+)$" "\\1" version "${name}")
cmake_path(GET out PARENT_PATH folder)
file(MAKE_DIRECTORY ${folder})

# The library is nothing but its data, which fills one section. icupkg knows files by these names only.
set(whole ${folder}/icudt${version}l.dat)
set(smaller ${folder}/smaller.dat)
set(removed ${folder}/removed.txt)
execute_process(COMMAND ${objcopy} -O binary --only-section=.rodata ${library} ${whole} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${icupkg} -l ${whole} OUTPUT_VARIABLE items COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" items "${items}")
set(unused ${items})
# Languages have two or three letters; what follows an underscore is their script or country.
list(FILTER unused INCLUDE REGEX
  "^((curr|lang|region|unit|zone|coll|brkitr|rbnf|translit)/)?[a-z][a-z][a-z]?(_[A-Za-z0-9_]*)?\\.res$|\\.cnv$|\\.dict$")
list(FILTER unused EXCLUDE REGEX "^([a-z]+/)?en(_[A-Za-z0-9_]*)?\\.res$")
list(APPEND unused brkitr/root.res)
list(JOIN unused "\n" unused)
file(WRITE ${removed} "${unused}\n")

# The root data of text boundaries names the dictionaries: it is made again without them.
set(items ${folder}/items/brkitr)
file(MAKE_DIRECTORY ${items})
execute_process(COMMAND ${icupkg} -x brkitr/root.res -d ${folder}/items ${whole} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${derb} -d ${items} -s ${items} root.res COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
file(READ ${items}/root.txt boundaries)
string(REGEX REPLACE "[^\n]*\\.dict\"[^\n]*\n" "" boundaries "${boundaries}")
file(WRITE ${items}/root.txt "${boundaries}")
execute_process(COMMAND ${genrb} -q -s ${items} -d ${items} root.txt COMMAND_ERROR_IS_FATAL ANY)
file(WRITE ${folder}/added.txt "brkitr/root.res\n")
execute_process(COMMAND ${icupkg} -r ${removed} -a ${folder}/added.txt -s ${folder}/items ${whole} ${smaller}
  COMMAND_ERROR_IS_FATAL ANY)

set(symbol icudt${version}_dat)
file(WRITE ${folder}/data.S "
  .section .rodata
  .balign 16
  .globl ${symbol}
  .type ${symbol}, @object
${symbol}:
  .incbin \"${smaller}\"
  .size ${symbol}, . - ${symbol}
  .section .note.GNU-stack, \"\", @progbits
")
execute_process(COMMAND ${compiler} -m32 -shared -nostdlib -Wl,-soname,${name} -o ${out} ${folder}/data.S
  COMMAND_ERROR_IS_FATAL ANY)

# Makes a smaller copy of ICU's library of data, for packages: the language data of English only. Where ICU looks for
# another language it goes on to its root data, and the character sets of files are converted by the C library.
#
#   cmake -Dlibrary=FILE -Dout=FILE -Dcompiler=GCC -Dobjcopy=OBJCOPY -P icu_data.cmake
cmake_minimum_required(VERSION 3.25)
if(EXISTS ${out} AND ${out} IS_NEWER_THAN ${library} AND ${out} IS_NEWER_THAN ${CMAKE_CURRENT_LIST_FILE})
  return()
endif()
find_program(icupkg icupkg PATHS /usr/sbin)
if(NOT icupkg)
  message(FATAL_ERROR "wanted icupkg, which comes with the Debian package icu-devtools, found none; run tools/bootstrap")
endif()
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
  "^((curr|lang|region|unit|zone|coll|brkitr|rbnf|translit)/)?[a-z][a-z][a-z]?(_[A-Za-z0-9_]*)?\\.res$|\\.cnv$")
list(FILTER unused EXCLUDE REGEX "^([a-z]+/)?en(_[A-Za-z0-9_]*)?\\.res$")
list(JOIN unused "\n" unused)
file(WRITE ${removed} "${unused}\n")
execute_process(COMMAND ${icupkg} -r ${removed} ${whole} ${smaller} COMMAND_ERROR_IS_FATAL ANY)

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

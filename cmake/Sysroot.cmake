# Targets for the 32-bit libraries that tools/bootstrap unpacked below build/sysroot.
set(QVX_SYSROOT ${PROJECT_BINARY_DIR}/sysroot CACHE PATH "32-bit libraries unpacked by tools/bootstrap")
set(QVX_SYSROOT_LIB ${QVX_SYSROOT}/usr/lib/i386-linux-gnu)
set(QVX_SYSROOT_LIBS ${QVX_SYSROOT_LIB}:${QVX_SYSROOT}/usr/lib:${QVX_SYSROOT}/lib/i386-linux-gnu)
if(NOT EXISTS ${QVX_SYSROOT_LIB})
  message(FATAL_ERROR "wanted 32-bit libraries below ${QVX_SYSROOT}, found none; run tools/bootstrap first")
endif()

if(NOT QVX_COVERAGE)
  add_compile_options(-ffile-prefix-map=${QVX_SYSROOT}=./build/sysroot)
endif()

# Headers of every library below; no library search path, so that the compiler's own libc is always the one taken.
add_library(sysroot_headers INTERFACE)
target_include_directories(sysroot_headers SYSTEM INTERFACE
  ${QVX_SYSROOT}/usr/include)

# What a program or library needs to find the sysroot's libraries at run-time, relative to itself: the same file wherever
# the tree lies. DT_RPATH, not DT_RUNPATH: it must hold for the libraries' own dependencies too.
add_library(sysroot_rpath INTERFACE)
set(kind $<IF:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>,RUNTIME,LIBRARY>)
set(there $$ORIGIN/$<PATH:RELATIVE_PATH,${QVX_SYSROOT},$<TARGET_PROPERTY:${kind}_OUTPUT_DIRECTORY>>)
target_link_options(sysroot_rpath INTERFACE -Wl,--disable-new-dtags -Wl,-rpath-link,${QVX_SYSROOT_LIBS})
# As a library, which goes into the build as it stands: among the options CMake would let the shell expand $ORIGIN.
target_link_libraries(sysroot_rpath INTERFACE
  "-Wl,-rpath,'${there}/usr/lib/i386-linux-gnu:${there}/usr/lib:${there}/lib/i386-linux-gnu'")

# sysroot_library(target file...): an imported library by its files below the sysroot.
function(sysroot_library target)
  add_library(${target} INTERFACE)
  target_link_libraries(${target} INTERFACE sysroot_headers sysroot_rpath)
  foreach(file ${ARGN})
    target_link_libraries(${target} INTERFACE ${QVX_SYSROOT_LIB}/${file})
  endforeach()
endfunction()

sysroot_library(lcms2 liblcms2.so)
sysroot_library(gtest libgtest.a)
sysroot_library(gmock libgmock.a libgtest.a)
sysroot_library(benchmark libbenchmark.so)
sysroot_library(edit libedit.so)
sysroot_library(cairo libcairo.so)
sysroot_library(gnustep ../libgnustep-gui.so ../libgnustep-base.so)
target_link_libraries(gnustep INTERFACE objc m)
target_compile_options(gnustep INTERFACE $<$<COMPILE_LANGUAGE:OBJC>:
  -std=gnu11 -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1 -DGNUSTEP_GUI_LIBRARY=1 -D_NATIVE_OBJC_EXCEPTIONS
  -fconstant-string-class=NSConstantString -fexceptions -fobjc-exceptions>)
target_include_directories(gnustep SYSTEM INTERFACE ${QVX_SYSROOT}/usr/include/GNUstep)

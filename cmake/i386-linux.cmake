# The toolchain: Debian's g++ with its 32-bit multilib.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
find_program(CMAKE_OBJC_COMPILER gcc)  # a clang on the machine would be taken first and speak to another Objective-C runtime
foreach(language C CXX OBJC ASM)
  set(CMAKE_${language}_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
endforeach()
set(CMAKE_SHARED_LINKER_FLAGS_INIT -m32)
set(CMAKE_EXE_LINKER_FLAGS_INIT -m32)

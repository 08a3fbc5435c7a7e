# The toolchain: Debian's g++ with its 32-bit multilib.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
find_program(CMAKE_OBJC_COMPILER gcc)  # a clang on the machine would be taken first and speak to another Objective-C runtime
add_compile_options(-m32 -msse2 -mfpmath=sse)
add_link_options(-m32)

# The toolchain: Debian's g++ with its 32-bit multilib.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
add_compile_options(-m32 -msse2 -mfpmath=sse)
add_link_options(-m32)

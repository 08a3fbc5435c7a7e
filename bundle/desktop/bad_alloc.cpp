// bundle/desktop/bad_alloc.cpp - std::bad_alloc's constructor, which the desktop's libstdc++ does not export.
//
// libc++'s headers leave it to their library; libstdc++'s have it in the class.
#include <new>

std::bad_alloc::bad_alloc() noexcept = default;

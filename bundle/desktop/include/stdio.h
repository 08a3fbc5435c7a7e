// bundle/desktop/include/stdio.h - the desktop's <stdio.h>: formatting into a buffer.
#pragma once

#include <stddef.h>

extern "C" {

__attribute__((__format__(__printf__, 3, 4))) int snprintf(char* buffer, size_t size, const char* format,
                                                           ...);

// Named by libc++'s <cstdio> beside an algorithm of the same name; the bundle never calls it.
int remove(const char* path);

}  // extern "C"

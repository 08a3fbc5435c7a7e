// bundle/desktop/include/stdlib.h - the desktop's <stdlib.h>: memory, and what libc++'s <cstdlib> wraps.
#pragma once

#include <stddef.h>

extern "C" {

void* malloc(size_t size);
void* calloc(size_t count, size_t size);
void free(void* memory);

// Named by the aligned operator new of libc++, which the bundle never calls.
int posix_memalign(void** memory, size_t alignment, size_t size);

}  // extern "C"

// bundle/desktop/include/string.h - the desktop's <string.h>: what the bundle calls or libc++ names.
#pragma once

#include <stddef.h>

extern "C" {

void* memcpy(void* to, const void* from, size_t size);
void* memmove(void* to, const void* from, size_t size);
void* memset(void* memory, int byte, size_t size);
int memcmp(const void* first, const void* second, size_t size);
size_t strlen(const char* text);

// Named by inline functions of libc++ that the bundle never calls.
char* strchr(const char* text, int character);
char* strpbrk(const char* text, const char* characters);
char* strrchr(const char* text, int character);
char* strstr(const char* text, const char* part);
void* memchr(const void* memory, int byte, size_t size);

}  // extern "C"

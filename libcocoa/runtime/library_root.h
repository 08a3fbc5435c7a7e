// libcocoa/runtime/library_root.h - the folder below which GNUstep's libraries were unpacked.
#pragma once

#include <stddef.h>

// How many of the path's letters name that folder, where `library` is the real path of GNUstep's base
// library; 0 if it is the file system's root, or the library lies where none was unpacked.
size_t QVXRootOfLibrary(const char* library);

// hostrun/loader/loader.h - desktop bundles for any host on Linux: build/libdesktoploader.so.
//
// Plain C that stands alone: a host may link the library, or look the functions up after dlopen.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Maps a desktop bundle: its folder, which ends in ".bundle", or the file inside. The platform's symbols must
// have been loaded for all to see (RTLD_GLOBAL) before. A file can be opened more than once; each time it is
// mapped anew. NULL for a file that is refused: `error`, `size` bytes long, then holds one line that says
// why.
void* QVXOpenDesktopBundle(const char* file, char* error, unsigned long size);

// The address of an exported function by its C name, such as "REALPluginMain"; NULL if there is none.
void* QVXDesktopSymbol(void* bundle, const char* name);

// Unmaps the bundle; nothing that came from it may be used any more. NULL is nothing to do.
void QVXCloseDesktopBundle(void* bundle);

#ifdef __cplusplus
}
#endif
